#pragma once

// The functions of angles.h, of any angle and slowly: by numbers of many bits. The guess is a double next to the result
// or a few away from it.

namespace tarvo::plugin::careful {

double sine(double angle, double guess);
double cosine(double angle, double guess);
double tangent(double angle, double guess);
double arc_sine(double value, double guess);
double arc_tangent(double value, double guess);

}  // namespace tarvo::plugin::careful
