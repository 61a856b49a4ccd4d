#pragma once

// Composites: a picture is laid over another, with one opacity or with the opacities of a mask, or a colour is laid
// over a region. Results have the source's size. Fractions are from 0 (only the source shows) to 1 (only the overlay).

#include "picture.h"
#include "real_interface.h"
#include "region.h"

// The overlay's own mask makes it more transparent: under black it has the given fraction, under white it is invisible.
REALpictureStruct* TRV_Composite(REALpictureStruct* p, REALpictureStruct* overlay, double overlay_fraction, int left,
                                 int top, int yield);
REALobjectStruct* TRV_ClientPicture_Composite(REALobjectStruct* cp, REALobjectStruct* overlay, double overlay_fraction,
                                              int left, int top, bool as_picture);
// The mask argument has the overlay's size and the opposite sense: under white the overlay shows, under black not.
REALpictureStruct* TRV_CompositeWithMask(REALpictureStruct* p, REALpictureStruct* overlay, REALpictureStruct* mask,
                                         int left, int top, int yield);
REALpictureStruct* TRV_Composite_Color(REALpictureStruct* p, REALobjectStruct* rect, int overlay_color,
                                       double overlay_fraction, int yield);

// The kernels. All pictures are locked, and the result has the source's size.
void PrivComposite(const TRV_Picture& source, const TRV_Picture& overlay, double overlay_fraction, int left, int top,
                   TRV_Picture& result);
void PrivCompositeWithMask(const TRV_Picture& source, const TRV_Picture& overlay, const TRV_Picture& mask, int left,
                           int top, TRV_Picture& result);
void PrivCompositeColor(const TRV_Picture& source, TRV_Picture& result, const tarvo::plugin::Region& region,
                        int overlay_color, double overlay_fraction, int yield);
