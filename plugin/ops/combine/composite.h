#pragma once

// Composites: a picture laid over another at a place, with one opacity or with that of a mask, or a colour laid over a
// region. Results have the source's size. Fractions are from 0 (the source) to 1 (the overlay).

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// The overlay's own mask makes it more transparent: a black mask pixel leaves the fraction, a white one nothing.
REALpictureStruct* TRV_Composite(REALpictureStruct* p, REALpictureStruct* overlay, double overlay_fraction, int left,
                                 int top, int yield);
REALobjectStruct* TRV_ClientPicture_Composite(REALobjectStruct* cp, REALobjectStruct* overlay, double overlay_fraction,
                                              int left, int top, bool as_picture);
// The mask, of the overlay's size, says how much of the overlay shows: nothing under black, all under white.
REALpictureStruct* TRV_CompositeWithMask(REALpictureStruct* p, REALpictureStruct* overlay, REALpictureStruct* mask,
                                         int left, int top, int yield);
REALpictureStruct* TRV_Composite_Color(REALpictureStruct* p, REALobjectStruct* rect, int overlay_color,
                                       double overlay_fraction, int yield);

// The kernels: locked pictures, the result of the source's size.
void PrivComposite(const TRV_Picture& source, const TRV_Picture& overlay, double overlay_fraction, int left, int top,
                   TRV_Picture& result);
void PrivCompositeWithMask(const TRV_Picture& source, const TRV_Picture& overlay, const TRV_Picture& mask, int left,
                           int top, TRV_Picture& result);
void PrivCompositeColor(const TRV_Picture& source, TRV_Picture& result, const Region& region, int overlay_color,
                        double overlay_fraction, int yield);
