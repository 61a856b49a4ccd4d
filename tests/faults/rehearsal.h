#pragma once

// An operation as the host sees it: the calls of services that can fail, in their order, and what comes of each
// failure. A course (see courses.h) tells one operation in these terms; run with a fault, it foretells what the
// operation does.

#include <map>
#include <span>
#include <string_view>
#include <vector>

#include "client_pictures.h"

namespace tarvo::test {

// A service that fails: its n-th call, or that and all later ones.
struct Fault {
    std::string_view service;
    int n = 0;  // 0 for no fault
    bool from_then_on = false;

    bool hits(int call) const { return n > 0 && (call == n || (from_then_on && call > n)); }
};

// What stays behind a failed operation because it is to. Nothing else may.
enum class Survivor {
    // A result's host picture that was made, and then it or its mask could not be locked: it had been promised to the
    // caller.
    promised_picture,
    // A client picture whose pixels could not be made: the plugin adds a reference and drops one, which keeps the
    // first.
    refused_client_picture,
};

struct Outcome {
    int code = 0;
    bool gives_nothing = false;  // nil, where a result is an object
    std::vector<Survivor> survivors;
    std::map<std::string_view, int> calls;
};

class Rehearsal {
public:
    // `code`: the error code before the call. `class_known`: the plugin has looked its own class up before.
    Rehearsal(Session& session, const host::Callable& method, std::span<const Value> arguments, const Fault& fault,
              int code, bool class_known);

    template <class Course>
    Outcome run(Course course) {
        try {
            course(*this);
        } catch (Stop) {
        }
        return outcome_;
    }

    // --- what courses are told in; `argument` is an index, self being 0. A failure leaves the code and ends the course
    // with nothing, if not said otherwise.

    static constexpr int kSameCode = -1;

    void clears_error() { outcome_.code = 0; }
    // For operations that always fail with these arguments.
    void refuses(int code) { stop(code); }
    void lock(int argument, int code);
    bool can_lock(int argument);
    // What the rectangle selects of the picture: of an empty one, nothing.
    void select(int argument, int code);
    // Asks whether the picture, as it is bound, has a mask.
    bool has_mask(int argument);
    // Binds a locked picture's mask, or that of the argument as it was handed in.
    bool can_lock_mask(int argument);
    bool can_lock_mask_of_handle(int argument);
    void lock_mask(int argument, int code);
    // The result, in the operation's form, of the picture's size and as deep, 16 bits at least; `with_mask` matters to
    // client pictures.
    void make_result(int code, bool with_mask = false);
    void make_result_of(Size size, int depth, int code, bool with_mask = false);
    bool can_lock_result_mask();
    // The mask of a new picture.
    bool can_lock_new_mask() { return bind_mask(MaskStore::none); }
    // For a result that is given up once it is there.
    [[noreturn]] void abandon_result(int code);
    // A picture of the operation's own.
    bool can_make_temporary(Size size, int depth = 32);
    void make_temporary(Size size, int code);
    // The source's mask into the result's; a failure leaves the code and the result.
    void copy_mask(int code);
    // Any other service, whose failure ends the course with nothing and the code as it is.
    void need(std::string_view service);
    // Any service: false when the call fails.
    bool call(std::string_view service);

    void set_code(int code) {
        if (code != kSameCode) outcome_.code = code;
    }
    // Ends the course; the result is given all the same.
    [[noreturn]] void stop_with_result(int code);
    [[noreturn]] void stop(int code);

    bool client_form() const;
    Size size(int argument) const;
    int depth(int argument) const;
    // What the operation raises the picture's depth to.
    int result_depth() const;
    int mask_depth(int argument) const;  // of a picture's mask as it is handed in, or as the host makes it
    const Picture* picture(int argument) const;
    bool string_has_mask(int argument) const;  // of a picture's string

private:
    struct Stop {};
    enum class MaskStore { own_memory, none, impossible, world, other };

    bool flag(std::string_view parameter) const;
    bool bind_mask(MaskStore store);
    MaskStore mask_store(const Picture* picture) const;
    void make_client(Size size, int depth, int code, bool with_mask);

    Session& session_;
    const host::Callable& method_;
    std::span<const Value> arguments_;
    Fault fault_;
    bool class_known_;
    Outcome outcome_;
};

}  // namespace tarvo::test
