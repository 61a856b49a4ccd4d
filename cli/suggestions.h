#pragma once

// Messages for who asked for something that there is not.

#include <string>

#include "search.h"

namespace tarvo::cli {

// "; did you mean TRV_Stretch or TRV_Trim?", or nothing.
inline std::string suggestions(const reference::Reference& all, const std::string& name) {
    std::string text;
    for (const std::string& each : reference::near_names(all, name))
        text += (text.empty() ? "; did you mean " : " or ") + each;
    return text.empty() ? text : text + "?";
}

}  // namespace tarvo::cli
