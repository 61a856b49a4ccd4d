#pragma once

#include <optional>

#include "image.h"
#include "metadata.h"

namespace tarvo::host {

// What a file had besides the colours of its pixels. Decoders fill it; the picture has it from then on, and so do the
// results of operations on it, which share it: nobody changes it any more. Encoders keep what their format can hold.
struct Carried {
    FilePixels pixels = {};
    Metadata metadata = {};
    std::optional<JpegMaking> jpeg = {};  // of a JPEG file
    Losses losses = {};                   // what reading it has lost
};

}  // namespace tarvo::host
