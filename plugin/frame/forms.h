#pragma once

// The two forms of an operation. Each knows how a picture argument is bound, how the result is made, and what is given
// back when the result cannot be locked; the operation itself is written once, over a form.

#include <algorithm>
#include <cstdint>

#include "client_picture.h"
#include "error_state.h"
#include "host_reference.h"
#include "picture.h"

namespace tarvo::plugin {

// Whether a result is made with a mask.
enum class ResultMask { none, wanted };

// Takes host pictures, and makes host pictures.
struct PictureForm {
    using Handle = REALpictureStruct*;

    // Whether a result's mask must be made with it. A host picture's is made when it is bound.
    static constexpr bool makes_masks = false;
    // The code of a result that cannot be locked.
    ErrorCode refusal = ErrorCode::result_lock;

    static TRV_Picture bind(Handle picture) { return TRV_Picture(picture, kAsImage); }

    // Makes the result and has it painted.
    template <class Paint>
    Handle produce(std::int32_t width, std::int32_t height, std::int32_t depth, ResultMask, Paint paint) const {
        HostReference<REALpictureStruct> made;
        TRV_Picture result(width, height, depth, kHandOver);
        // The host picture is not dropped here: it was promised to the caller.
        if (!result.Lock()) return fail(refusal);
        made.reset(result.picture());  // painting may throw what the host throws
        paint(result);
        return made.release();
    }
};

// The form of operations that leave no code when the result cannot be locked.
inline constexpr PictureForm kSilentForm = {.refusal = ErrorCode::none};

// Takes client pictures, and makes client pictures that are backed by a host picture or by their own memory.
struct ClientForm {
    using Handle = REALobjectStruct*;

    static constexpr bool makes_masks = true;
    bool as_picture = false;

    static TRV_Picture bind(Handle clientPicture) {
        return TRV_Picture(TRV_ClientPicture_GetData(clientPicture), kAsImage);
    }

    template <class Paint>
    Handle produce(std::int32_t width, std::int32_t height, std::int32_t depth, ResultMask mask, Paint paint) const {
        const bool with_mask = mask == ResultMask::wanted;
        HostReference<REALobjectStruct> made(TRV_ClientPicture_new(width, height, depth, with_mask, as_picture));
        TRV_Picture result = bind(made.get());
        if (result.Lock() && result.width() == width && result.height() == height)
            paint(result);
        else
            set_error(ErrorCode::result_lock);  // the unpainted client picture is returned all the same
        return made.release();
    }
};

// Results are at least 16 bits deep.
inline std::int32_t result_depth(const TRV_Picture& source) { return std::max<std::int32_t>(source.depth(), 16); }

inline bool same_size(const TRV_Picture& a, const TRV_Picture& b) {
    return a.width() == b.width() && a.height() == b.height();
}

}  // namespace tarvo::plugin
