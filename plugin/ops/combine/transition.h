#pragma once

// One frame of a cross-fade between two overlays, through which the picture beneath shows.

#include "picture.h"
#include "real_interface.h"

// The fraction is from 0 (`overlay_b`) to 1 (`overlay_a`); all pictures are of one size.
REALpictureStruct* TRV_Transition(REALpictureStruct* p, REALpictureStruct* overlay_a, REALpictureStruct* overlay_b,
                                  double overlay_a_fraction);

// The kernel: locked pictures of one size.
void PrivTransition(const TRV_Picture& source, const TRV_Picture& overlay_a, const TRV_Picture& overlay_b,
                    double overlay_a_fraction, TRV_Picture& result);
