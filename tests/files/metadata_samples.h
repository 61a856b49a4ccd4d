#pragma once

// Metadata made by hand.

#include <cstdint>
#include <string_view>

#include "big_endian.h"
#include "file_samples.h"

namespace tarvo::host {

// An image resource without a name.
inline Bytes resource(std::uint32_t number, const Bytes& data) {
    Bytes made = bytes_of("8BIM");
    append_big_endian(made, number, 2);
    append_big_endian(made, 0, 2);
    append_big_endian(made, static_cast<std::uint32_t>(data.size()), 4);
    made = made + data;
    if (made.size() % 2 != 0) made.push_back(0);
    return made;
}

// A profile of one tag, of which only the header means something.
inline Bytes profile(std::string_view colors) {
    Bytes made(16);
    made = made + bytes_of(colors) + Bytes(16) + bytes_of("acsp") + Bytes(88);
    append_big_endian(made, 1, 4);
    made = made + bytes_of("desc");
    append_big_endian(made, 144, 4);
    append_big_endian(made, 4, 4);
    made = made + Bytes(4);
    made[3] = static_cast<std::uint8_t>(made.size());
    return made;
}

}  // namespace tarvo::host
