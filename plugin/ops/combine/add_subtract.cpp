#include "add_subtract.h"

#include <cstddef>

#include "error_state.h"
#include "forms.h"
#include "pixel_maps.h"

namespace tarvo::plugin {
namespace {

// Three channels are worked on at once: the sum of the low seven bits of one cannot carry into the next, and the
// highest bit of each is an exclusive or. Sums and differences wrap, and the top byte is 0.
constexpr PixelColor kLowBits = 0x7F7F7F;
constexpr PixelColor kHighBits = 0x808080;

struct Add {
    TARVO_INLINED PixelColor operator()(PixelColor a, PixelColor b) const {
        return ((a & kLowBits) + (b & kLowBits)) ^ ((a ^ b) & kHighBits);
    }
};

struct Subtract {
    TARVO_INLINED PixelColor operator()(PixelColor a, PixelColor b) const {
        return (((a & kLowBits) | kHighBits) - (b & kLowBits)) ^ (~(a ^ b) & kHighBits);
    }
};

// The differences between the two operations.
struct Operation {
    void (*kernel)(const TRV_Picture&, const TRV_Picture&, TRV_Picture&, int yield);
    ErrorCode second_nil, second_lock, second_size;
    ResultMask mask;  // for a client picture's result, where it stays as it is made; the two differ on purpose
};

constexpr Operation kAdd = {.kernel = PrivAdd,
                            .second_nil = ErrorCode::addend_nil,
                            .second_lock = ErrorCode::addend_lock,
                            .second_size = ErrorCode::addend_size,
                            .mask = ResultMask::wanted};
constexpr Operation kSubtract = {.kernel = PrivSubtract,
                                 .second_nil = ErrorCode::subtractend_nil,
                                 .second_lock = ErrorCode::subtractend_lock,
                                 .second_size = ErrorCode::subtractend_size,
                                 .mask = ResultMask::none};

template <class Form>
typename Form::Handle combine(const Operation& operation, Form form, typename Form::Handle first,
                              typename Form::Handle second, int yield) {
    clear_error();
    if (!first) return fail(ErrorCode::source_nil);
    if (!second) return fail(operation.second_nil);
    TRV_Picture source = form.bind(first);
    if (!source.Lock()) return fail(ErrorCode::source_lock);
    TRV_Picture other = form.bind(second);
    if (!other.Lock()) return fail(operation.second_lock);
    if (!same_size(source, other)) return fail(operation.second_size);
    return form.produce(source.width(), source.height(), result_depth(source), operation.mask,
                        [&](TRV_Picture& result) { operation.kernel(source, other, result, yield); });
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

void PrivAdd(const TRV_Picture& source, const TRV_Picture& addend, TRV_Picture& result, int yield) {
    map_pictures(source, result, yield, "TRV_Add", Add{}, addend);
}

void PrivSubtract(const TRV_Picture& source, const TRV_Picture& subtractend, TRV_Picture& result, int yield) {
    map_pictures(source, result, yield, "TRV_Subtract", Subtract{}, subtractend);
}

REALpictureStruct* TRV_Add(REALpictureStruct* p, REALpictureStruct* addend, int yield) {
    return combine(kAdd, PictureForm{}, p, addend, yield);
}

REALpictureStruct* TRV_Subtract(REALpictureStruct* p, REALpictureStruct* subtractend, int yield) {
    return combine(kSubtract, PictureForm{}, p, subtractend, yield);
}

REALobjectStruct* TRV_ClientPicture_Add(REALobjectStruct* cp, REALobjectStruct* addend, int yield, bool as_picture) {
    return combine(kAdd, ClientForm{as_picture}, cp, addend, yield);
}

REALobjectStruct* TRV_ClientPicture_Subtract(REALobjectStruct* cp, REALobjectStruct* subtractend, int yield,
                                             bool as_picture) {
    return combine(kSubtract, ClientForm{as_picture}, cp, subtractend, yield);
}
