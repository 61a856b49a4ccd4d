#pragma once

#include <cstdint>

namespace tarvo::host {

// The tags of TIFF's directories that somebody here asks for.
enum TiffTag : std::uint32_t {
    kTiffSubfileType = 254,
    kTiffWidth = 256,
    kTiffHeight = 257,
    kTiffBits = 258,
    kTiffCompression = 259,
    kTiffPhotometric = 262,
    kTiffStripPlaces = 273,
    kTiffOrientation = 274,
    kTiffSamples = 277,
    kTiffRowsInAStrip = 278,
    kTiffStripSizes = 279,
    kTiffXResolution = 282,
    kTiffYResolution = 283,
    kTiffPlanes = 284,
    kTiffResolutionUnit = 296,
    kTiffPredictor = 317,
    kTiffColorMap = 320,
    kTiffDirectoriesBelow = 330,
    kTiffExtraSamples = 338,
    kTiffXmp = 700,
    kTiffIptc = 33723,
    kTiffResources = 34377,
    kTiffCamera = 34665,  // the directory of what cameras tell
    kTiffProfile = 34675,
    kTiffPosition = 34853,           // the directory of where they were
    kTiffInteroperability = 0xA005,  // in the camera's
    kTiffMakerNote = 0x927C,         // likewise
};

}  // namespace tarvo::host
