#include "free_rotate_by_shear.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "angles.h"
#include "forms.h"
#include "free_rotation.h"
#include "host_reference.h"
#include "numbers.h"
#include "quarter_turns.h"
#include "shear_kernels.h"

namespace tarvo::plugin {
namespace {

// A rotation, split into whole quarter turns and a rest that three shears do.
struct SplitRotation {
    int quarter_turns;
    double degrees;  // the rest, from -45 to below 45
    double angle;    // the rest in radians

    explicit SplitRotation(double rotation) {
        const double turns = std::floor((rotation + 45.0) / 90.0);
        quarter_turns = truncate_to_int32(turns) & 3;
        degrees = rotation - 90.0 * turns;
        angle = degrees * free_rotation::kPi / 180.0;
    }
    double row_shear() const { return tangent(angle / 2.0); }
    double column_shear() const { return sine(-angle); }
};

// Returns the length of lines after a shear: `length` and what a shear of `lines` lines adds to it.
std::int32_t sheared_length(std::int32_t length, std::int32_t lines, double shear) {
    constexpr std::int64_t kOne = 65536;
    const std::int64_t step = truncate_to_int32(shear * kOne);
    const std::int64_t sheared = (length * kOne + lines * (step < 0 ? -step : step) + kOne - 1) / kOne;
    return static_cast<std::int32_t>(std::min<std::int64_t>(sheared, std::numeric_limits<std::int32_t>::max()));
}

// Returns the bounds of a picture that has been turned by its quarter turns, after it is turned by the rest.
Size rotated_size(Size turned, const SplitRotation& split) {
    const free_rotation::Diagonal diagonal(turned.width, turned.height);
    const double after = split.angle + diagonal.angle, before = split.angle - diagonal.angle;
    const double opposite = split.angle + (free_rotation::kPi - diagonal.angle);
    if (split.degrees > 0.0) return {diagonal.width_at(before), diagonal.height_at(after)};
    if (split.degrees < 0.0) return {diagonal.width_at(after), diagonal.height_at(opposite)};
    return turned;
}

// --- the pictures on the way -----------------------------------------------------------------------------------------

enum class Purpose { intermediate, result };

// An image and its mask. What is done to the one is done to the other.
class MaskedStage {
public:
    explicit MaskedStage(REALpictureStruct* p) : image_(p, kAsImage), mask_(p, kAsMask) {}
    // The image and the mask get the depths of the locked source's. But the host chooses the depth of a result's mask.
    MaskedStage(const MaskedStage& source, Size size, Purpose purpose)
        : image_(size.width, size.height, result_depth(source.image_), purpose == Purpose::result),
          mask_(static_cast<REALpictureStruct*>(nullptr), kAsMask) {
        if (purpose == Purpose::result)
            mask_.SetREALPicture(image_.picture(), kAsMask);
        else
            mask_.SetNewPicture(size.width, size.height, source.mask_.depth(), kTemporary);
    }

    bool lock() { return image_.Lock() && mask_.Lock(); }
    void release() {
        image_.Release();
        mask_.Release();
    }
    const TRV_Picture& image() const { return image_; }

    void turn_into(MaskedStage& next, QuarterTurn& kernel, int yield) const {
        kernel(image_, next.image_, yield);
        kernel(mask_, next.mask_, yield);
    }
    void shear_rows_into(MaskedStage& next, double shear, int yield) const {
        Priv_ShearHorizontal(image_, next.image_, mask_, next.mask_, shear, yield);
    }
    void shear_columns_into(MaskedStage& next, double shear, int yield) const {
        Priv_ShearVertical(image_, next.image_, mask_, next.mask_, shear, yield);
    }

private:
    TRV_Picture image_, mask_;
};

// An image without a mask. Places that it does not cover get the frame's colour.
class FramedStage {
public:
    FramedStage(REALpictureStruct* p, int frame_color) : image_(p, kAsImage), frame_color_(frame_color) {}
    FramedStage(const FramedStage& source, Size size, Purpose purpose)
        : image_(size.width, size.height, result_depth(source.image_), purpose == Purpose::result),
          frame_color_(source.frame_color_) {}

    bool lock() { return image_.Lock(); }
    void release() { image_.Release(); }
    const TRV_Picture& image() const { return image_; }

    void turn_into(FramedStage& next, QuarterTurn& kernel, int yield) const { kernel(image_, next.image_, yield); }
    void shear_rows_into(FramedStage& next, double shear, int yield) const {
        Priv_ShearHorizontal(image_, next.image_, shear, frame_color_, yield);
    }
    void shear_columns_into(FramedStage& next, double shear, int yield) const {
        Priv_ShearVertical(image_, next.image_, shear, frame_color_, yield);
    }

private:
    TRV_Picture image_;
    int frame_color_;
};

// Does the quarter turns, then a shear of the rows, one of the columns and one of the rows again.
template <class Stage>
REALpictureStruct* rotate(Stage source, double rotation, int yield) {
    if (!source.lock() || std::isnan(rotation)) return nullptr;
    const SplitRotation split(rotation);

    const Size turned = turned_size(source.image(), split.quarter_turns);
    Stage one(source, turned, Purpose::intermediate);
    if (!one.lock()) return nullptr;
    source.turn_into(one, quarter_turn(split.quarter_turns), yield);

    const Size widened = {sheared_length(turned.width, turned.height, split.row_shear()), turned.height};
    Stage two(source, widened, Purpose::intermediate);
    if (!two.lock()) return nullptr;
    one.shear_rows_into(two, split.row_shear(), yield);
    one.release();

    const Size heightened = {widened.width, sheared_length(widened.height, widened.width, split.column_shear())};
    Stage three(source, heightened, Purpose::intermediate);
    if (!three.lock()) return nullptr;
    two.shear_columns_into(three, split.column_shear(), yield);
    two.release();

    HostReference<REALpictureStruct> made;
    Stage result(source, rotated_size(turned, split), Purpose::result);
    if (!result.lock()) return nullptr;
    made.reset(result.image().picture());  // held here, because the host may throw when it gets control
    three.shear_rows_into(result, split.row_shear(), yield);
    return made.release();
}

}  // namespace
}  // namespace tarvo::plugin

using namespace tarvo::plugin;

REALpictureStruct* PrivFreeRotateByShear_NonVector(REALpictureStruct* p, double rotation, int yield) {
    return rotate(MaskedStage(p), rotation, yield);
}

REALpictureStruct* PrivFreeRotateByShear_Frame_NonVector(REALpictureStruct* p, double rotation, int frame_color,
                                                         int yield) {
    return rotate(FramedStage(p, frame_color), rotation, yield);
}

REALpictureStruct* TRV_FreeRotateByShear(REALpictureStruct* p, double rotation, int yield) {
    return free_rotation::arguments_pass(p, rotation) ? PrivFreeRotateByShear_NonVector(p, rotation, yield) : nullptr;
}

REALpictureStruct* TRV_FreeRotateByShear_Frame(REALpictureStruct* p, double rotation, int frame_color, int yield) {
    if (!free_rotation::arguments_pass(p, rotation)) return nullptr;
    return PrivFreeRotateByShear_Frame_NonVector(p, rotation, frame_color, yield);
}
