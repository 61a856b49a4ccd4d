#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace tarvo::language {

// An error at a place in the text of a call. `position` counts bytes from 0; `parameter` is the one whose argument is
// wrong, empty if that is not known.
class PlacedError : public std::runtime_error {
public:
    PlacedError(std::size_t position, const std::string& what, const std::string& parameter = {})
        : std::runtime_error(what), position_(position), parameter_(parameter) {}
    std::size_t position() const { return position_; }
    const std::string& parameter() const { return parameter_; }

private:
    std::size_t position_;
    std::string parameter_;
};

}  // namespace tarvo::language
