#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace tarvo::cli {

// An error at a place in the text of a call. `position` counts bytes from 0.
class PlacedError : public std::runtime_error {
public:
    PlacedError(std::size_t position, const std::string& what) : std::runtime_error(what), position_(position) {}
    std::size_t position() const { return position_; }

private:
    std::size_t position_;
};

}  // namespace tarvo::cli
