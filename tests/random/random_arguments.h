#pragma once

// Arguments of the declared types, and apart from that anything: values within the ranges that are described, at their
// ends and beyond, nil, pictures of every size, depth and kind, good ones and bad ones.

#include <span>
#include <vector>

#include "client_pictures.h"

namespace tarvo::test {

class RandomArguments {
public:
    RandomArguments(Session& session, Random& random) : session_(session), random_(random) {}

    // One for each parameter.
    std::vector<Value> for_method(const host::Callable& method);
    Value value_of(const host::Type& type, std::string_view name);

private:
    bool one_in(int cases) { return any_of(random_, 1, cases) == 1; }
    // What is rare, and never in a tame call.
    bool wild_one_in(int cases) { return !tame_ && one_in(cases); }
    template <class Table>
    auto one_of(const Table& table) {
        return table[static_cast<std::size_t>(any_of(random_, 0, static_cast<int>(std::size(table)) - 1))];
    }

    // Those that a tame call may take.
    template <class T>
    std::span<const T> first(std::span<const T> all, std::size_t good) const {
        return tame_ ? all.first(good) : all;
    }

    int integer();
    int side();
    double real();
    // Of a parameter whose range is described: within it, about its ends, or anything.
    Value number(const host::Callable& method, const host::Parameter& parameter, const std::vector<Value>& before);
    Size picture_size();
    Size odd_size();
    ObjectRef bare_picture(Size size, bool deep);
    ObjectRef picture();
    ObjectRef client();
    ObjectRef rectangle();
    ObjectRef matrix();
    ObjectRef convolution();
    ObjectRef string();
    ObjectRef integers(int most);
    ObjectRef object(const host::Type& type);
    void keep_small(std::vector<Value>& arguments, const host::Callable& method);

    Session& session_;
    Random& random_;
    bool tame_ = false;      // every argument of this call is one that most operations accept
    Size usual_size_{9, 7};  // of most pictures of a call, so that they fit each other
    std::vector<ObjectRef> pictures_;
};

}  // namespace tarvo::test
