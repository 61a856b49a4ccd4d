#pragma once

// One frame of a cross-fade between two overlays. Halfway, the source shows through both.

#include "picture.h"
#include "real_interface.h"

// The fraction is from 0 (only `overlay_b` shows) to 1 (only `overlay_a`). All pictures have one size.
REALpictureStruct* TRV_Transition(REALpictureStruct* p, REALpictureStruct* overlay_a, REALpictureStruct* overlay_b,
                                  double overlay_a_fraction);

// The kernel. All pictures are locked and have one size.
void PrivTransition(const TRV_Picture& source, const TRV_Picture& overlay_a, const TRV_Picture& overlay_b,
                    double overlay_a_fraction, TRV_Picture& result);
