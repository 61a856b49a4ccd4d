#include "rehearsal.h"

#include <algorithm>

namespace tarvo::test {

using host::Backing;

Rehearsal::Rehearsal(Session& session, const host::Callable& method, std::span<const Value> arguments,
                     const Fault& fault, int code, bool class_known)
    : session_(session), method_(method), arguments_(arguments), fault_(fault), class_known_(class_known) {
    outcome_.code = code;
}

bool Rehearsal::call(std::string_view service) {
    const int number = ++outcome_.calls[service];
    return !(service == fault_.service && fault_.hits(number));
}

void Rehearsal::stop(int code) {
    outcome_.gives_nothing = true;
    stop_with_result(code);
}

void Rehearsal::stop_with_result(int code) {
    set_code(code);
    throw Stop{};
}

void Rehearsal::need(std::string_view service) {
    if (!call(service)) stop(kSameCode);
}

// --- what is known of the arguments ---------------------------------------------------------------------------------

const Picture* Rehearsal::picture(int argument) const {
    const ObjectRef object = object_in(arguments_[static_cast<std::size_t>(argument)]);
    return dynamic_cast<const Picture*>(is_client(object) ? picture_behind(session_, object).get() : object.get());
}

Size Rehearsal::size(int argument) const {
    const Picture* const shown = picture(argument);
    return shown ? Size{shown->width(), shown->height()}
                 : own_size(object_in(arguments_[static_cast<std::size_t>(argument)]));
}

int Rehearsal::depth(int argument) const {
    const Picture* const shown = picture(argument);
    return shown ? shown->depth() : own_depth(object_in(arguments_[static_cast<std::size_t>(argument)]));
}

int Rehearsal::mask_depth(int argument) const {
    const Picture* const shown = picture(argument);
    return shown && shown->mask() ? pixels(shown->mask()).depth() : session_.host.mask_depth();
}

bool Rehearsal::string_has_mask(int argument) const {
    constexpr std::size_t kFlag = 10;
    const ObjectRef string = object_in(arguments_[static_cast<std::size_t>(argument)]);
    return dynamic_cast<const host::StringObject&>(*string.get()).bytes()[kFlag] != 0;
}

bool Rehearsal::client_form() const { return is_client(arguments_[0]); }

bool Rehearsal::flag(std::string_view parameter) const {
    const auto found = std::ranges::find(method_.parameters, parameter, &host::Parameter::name);
    return found != method_.parameters.end() &&
           std::get<bool>(arguments_[static_cast<std::size_t>(found - method_.parameters.begin())]);
}

// --- locking --------------------------------------------------------------------------------------------------------

void Rehearsal::select(int argument, int code) {
    if (size(argument).empty()) stop(code);
}

// A client picture's picture is held; a drawing is rendered into a picture made for it.
bool Rehearsal::can_lock(int argument) {
    const Value& value = arguments_[static_cast<std::size_t>(argument)];
    const Picture* const shown = picture(argument);
    if (!shown && is_client(value)) return true;
    if (is_client(value)) call("REALLockObject");
    if (!call("lockPictureDescription") || !shown) return false;
    return shown->backing() != Backing::drawing_commands || can_make_temporary(size(argument));
}

void Rehearsal::lock(int argument, int code) {
    if (!can_lock(argument)) stop(code);
}

Rehearsal::MaskStore Rehearsal::mask_store(const Picture* shown) const {
    if (!shown) return MaskStore::own_memory;
    if (!shown->mask()) return Size{shown->width(), shown->height()}.empty() ? MaskStore::impossible : MaskStore::none;
    return pixels(shown->mask()).backing() == Backing::graphics_world ? MaskStore::world : MaskStore::other;
}

// A rendered drawing has no mask.
bool Rehearsal::has_mask(int argument) {
    const Picture* const shown = picture(argument);
    if (!shown) return client_has_mask(object_in(arguments_[static_cast<std::size_t>(argument)]));
    return call("REALGetPictureMask") && shown->backing() != Backing::drawing_commands && shown->mask();
}

// The host makes a mask where there is none, a graphics world; of no pixels it makes none.
bool Rehearsal::bind_mask(MaskStore store) {
    if (store == MaskStore::own_memory) return true;
    if (!call("REALGetPictureMask") || store == MaskStore::impossible) return false;
    const bool granted = call("REALLockPictureDescription") && store != MaskStore::other;
    return granted || call("lockPictureDescription");
}

bool Rehearsal::can_lock_mask(int argument) {
    const Picture* const shown = picture(argument);
    const bool rendered = shown && shown->backing() == Backing::drawing_commands;
    return bind_mask(rendered ? MaskStore::none : mask_store(shown));
}

bool Rehearsal::can_lock_mask_of_handle(int argument) { return bind_mask(mask_store(picture(argument))); }

void Rehearsal::lock_mask(int argument, int code) {
    if (!can_lock_mask(argument)) stop(code);
}

bool Rehearsal::can_lock_result_mask() {
    const bool own_memory = client_form() && !flag("as_picture");
    return bind_mask(own_memory ? MaskStore::own_memory : MaskStore::none);
}

void Rehearsal::copy_mask(int code) {
    const bool source = can_lock_mask(0), result = can_lock_result_mask();
    if (!source || !result) set_code(code);
}

// --- making ---------------------------------------------------------------------------------------------------------

namespace {

// Depths that the plugin asks its host for.
bool is_new_depth(int depth) { return depth == 1 || depth == 16 || depth == 24 || depth == 32; }
// Those that the host makes pictures of.
bool is_picture_depth(int depth) { return is_new_depth(depth) || depth == 2 || depth == 4 || depth == 8; }

}  // namespace

bool Rehearsal::can_make_temporary(Size size, int depth) {
    return !size.empty() && is_new_depth(depth) && call("newPicture") && call("lockPictureDescription");
}

void Rehearsal::make_temporary(Size size, int code) {
    if (!can_make_temporary(size)) stop(code);
}

int Rehearsal::result_depth() const { return std::max(depth(0), 16); }

void Rehearsal::make_result(int code, bool with_mask) { make_result_of(size(0), result_depth(), code, with_mask); }

void Rehearsal::make_result_of(Size size, int depth, int code, bool with_mask) {
    if (client_form()) return make_client(size, depth, code, with_mask);
    if (size.empty() || !is_new_depth(depth) || !call("newPicture")) stop(code);
    if (!call("lockPictureDescription")) abandon_result(code);
}

void Rehearsal::abandon_result(int code) {
    outcome_.survivors.push_back(Survivor::promised_picture);
    stop(code);
}

void Rehearsal::make_client(Size size, int depth, int code, bool with_mask) {
    if (!class_known_ && !call("pluginObjectType")) stop(code);
    if (size.empty() || !call("CreateInstance")) stop(code);
    const bool as_picture = flag("as_picture");
    const bool made =
        as_picture ? call("newPicture") && is_picture_depth(depth) : depth == 16 || depth == 24 || depth == 32;
    if (!made) {
        if (call("REALLockObject")) outcome_.survivors.push_back(Survivor::refused_client_picture);
        stop(code);
    }
    if (!as_picture) return;
    if (with_mask) call("REALGetPictureMask");
    if (!call("lockPictureDescription")) stop_with_result(code);
}

}  // namespace tarvo::test
