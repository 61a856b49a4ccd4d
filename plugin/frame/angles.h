#pragma once

// Sine, cosine and their kin, rounded correctly: of all doubles the one nearest to the exact value. Those of C
// libraries differ in the last bit from one library or processor to another, and pixels with them.

namespace tarvo::plugin {

// Angles beyond this have no sine here; no picture is turned so far.
inline constexpr double kMostAngle = 1 << 20;

// In radians. What is not a number, or not in range, gives what is not a number.
double sine(double angle);
double cosine(double angle);
double tangent(double angle);
double arc_sine(double value);  // of -1 to 1
double arc_tangent(double value);

}  // namespace tarvo::plugin
