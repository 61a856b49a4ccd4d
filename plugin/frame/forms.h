#pragma once

// The two forms of an operation. Each knows how a picture argument is bound, how the result is made, and what is given
// back when the result cannot be locked; the operation itself is written once, over a form.

#include <algorithm>
#include <cstdint>

#include "client_picture.h"
#include "error_state.h"
#include "host_reference.h"
#include "picture.h"

// Host pictures in and out.
struct PictureForm {
    using Handle = REALpictureStruct*;

    // A result's mask is made with the result. Here, binding the result's mask makes one.
    static constexpr bool makes_masks = false;
    // Left when the result cannot be locked.
    ErrorCode refusal = ErrorCode::result_lock;

    static TRV_Picture bind(Handle picture) { return TRV_Picture(picture, false); }

    // Makes the result and has it painted.
    template <class Paint>
    Handle produce(std::int32_t width, std::int32_t height, std::int32_t depth, bool /*withMask*/, Paint paint) const {
        HostReference<REALpictureStruct> made;
        TRV_Picture result(width, height, depth, true);
        // The host picture is not dropped here: it was promised to the caller.
        if (!result.Lock()) return Fail(refusal);
        made.reset(result.picture());  // painting may throw what the host throws
        paint(result);
        return made.release();
    }
};

// Leaves no code when the result cannot be locked.
inline constexpr PictureForm kSilentForm = {.refusal = ErrorCode::none};

// Client pictures in and out; a result is backed by a host picture or by own memory.
struct ClientForm {
    using Handle = REALobjectStruct*;

    static constexpr bool makes_masks = true;
    bool as_picture;

    static TRV_Picture bind(Handle clientPicture) {
        return TRV_Picture(TRV_ClientPicture_GetData(clientPicture), false);
    }

    template <class Paint>
    Handle produce(std::int32_t width, std::int32_t height, std::int32_t depth, bool withMask, Paint paint) const {
        HostReference<REALobjectStruct> made(TRV_ClientPicture_new(width, height, depth, withMask, as_picture));
        TRV_Picture result = bind(made.get());
        if (result.Lock() && result.width() == width && result.height() == height)
            paint(result);
        else
            SetError(ErrorCode::result_lock);  // the unpainted client picture is returned all the same
        return made.release();
    }
};

// Results are at least 16 bits deep.
inline std::int32_t result_depth(const TRV_Picture& source) { return std::max<std::int32_t>(source.depth(), 16); }

inline bool same_size(const TRV_Picture& a, const TRV_Picture& b) {
    return a.width() == b.width() && a.height() == b.height();
}
