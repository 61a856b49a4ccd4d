#pragma once

// Pictures of a host with the plugin linked in, for tests of TRV_Picture.

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "host.h"
#include "picture.h"
#include "plugin_entry.h"

namespace tarvo::test {

using host::Backing;
using host::ObjectRef;
using host::Picture;
using host::PictureOptions;

class LockedPicture : public ::testing::Test {
protected:
    LockedPicture() { host.start_plugin(REALPluginMain); }

    ObjectRef make(PictureOptions options) {
        ObjectRef made = host.new_picture(options);
        scribble(of(made));
        return made;
    }
    void scribble(Picture& picture) {
        for (int y = 0; y < picture.height(); ++y)
            for (std::size_t i = 0; i < picture.packed_row_bytes(); ++i)
                picture.row(y)[i] = static_cast<std::uint8_t>(random());
    }
    static Picture& of(const ObjectRef& picture) { return dynamic_cast<Picture&>(*picture.get()); }
    static REALpictureStruct* handle(const ObjectRef& picture) {
        return static_cast<REALpictureStruct*>(picture.handle());
    }

    host::Host host;
    std::mt19937 random{7};
};

}  // namespace tarvo::test
