#include "chain.h"

#include "library_errors.h"
#include "shown_text.h"

namespace tarvo::cli {
namespace {

bool gives_picture_on_nothing(const std::string& call) {
    try {
        return !tarvo::check(call, "").empty();
    } catch (const Error&) {
        return false;
    }
}

}  // namespace

std::string Call::label(std::string_view name) const { return numbered(host::shown(host::beginning(name, 40))); }

std::string Call::numbered(const std::string& line, bool names_operation) const {
    if (number == 0) return line;
    return "call " + std::to_string(number) + (names_operation ? ", " : ": ") + line;
}

Chain::Chain(const std::vector<std::string>& texts, std::string on) : begins_with_nothing_(on.empty()) {
    for (const std::string& text : texts) {
        Call call{text, texts.size() > 1 ? calls_.size() + 1 : 0};
        try {
            const std::string gives = tarvo::check(text, on);
            call.makes_picture = !gives.empty();
            if (call.makes_picture) on = gives;
        } catch (const Error& error) {
            check_memory(error);
            throw WrongCall(call.numbered(error.what(), !error.operation().empty()), calls_.size());
        }
        calls_.push_back(std::move(call));
    }
    ends_with_picture_ = !on.empty();
}

Chain recipe_chain(const std::vector<std::string>& texts) {
    return {texts, !texts.empty() && gives_picture_on_nothing(texts.front()) ? "" : kPicture};
}

}  // namespace tarvo::cli
