#include "courses.h"

#include <algorithm>
#include <stdexcept>

#include "good_arguments.h"
#include "search.h"

namespace tarvo::test {
namespace {

using host::Callable;

constexpr int kSame = Rehearsal::kSameCode;

// --- courses that several operations share --------------------------------------------------------------------------

void nothing_can_fail(Rehearsal&) {}
void shows_text(Rehearsal& op) { op.call("REALBuildString"); }

void looks(Rehearsal& op) {
    op.clears_error();
    op.lock(0, 4);
}

void looks_at_a_region(Rehearsal& op) {
    looks(op);
    op.select(0, 38);
}

void changes_a_copy(Rehearsal& op) {
    looks(op);
    op.make_result(6);
}

void changes_a_region(Rehearsal& op) {
    looks_at_a_region(op);
    op.make_result(6);
}

void changes_a_region_and_keeps_the_mask(Rehearsal& op) {
    looks_at_a_region(op);
    const bool with_mask = op.client_form() && op.has_mask(0);
    op.make_result(6, with_mask);
    if (op.has_mask(0)) op.copy_mask(9);
}

void changes_by_mask(Rehearsal& op) {
    looks(op);
    op.lock(1, 9);
    op.make_result(6);
}

// Where the arguments say what a result's size is.
constexpr Size kAskedSize = {9, 9};

void shears_with_frame(Rehearsal& op) {
    op.clears_error();
    op.lock(0, kSame);
    op.make_result_of(kAskedSize, op.result_depth(), kSame);
}

// Both are bound before one is locked.
void locks_with_mask(Rehearsal& op, int code) {
    const bool image = op.can_lock(0), mask = op.can_lock_mask_of_handle(0);
    if (!image || !mask) op.stop(code);
}

void shears(Rehearsal& op) {
    op.clears_error();
    locks_with_mask(op, kSame);
    op.make_result_of(kAskedSize, op.result_depth(), kSame);
    op.can_lock_result_mask();
}

void flips_and_turns(Rehearsal& op) {
    looks(op);
    const bool masked = op.has_mask(0);
    if (masked) op.lock_mask(0, 9);
    op.make_result(6);
    if (masked && !op.can_lock_result_mask()) op.abandon_result(6);
}

void rotates_directly(Rehearsal& op) {
    flips_and_turns(op);
    if (!op.call("lockPictureDescription")) op.stop(5);
    op.make_result(6);
}

void rotates_by_shears(Rehearsal& op) {
    op.clears_error();
    locks_with_mask(op, kSame);
    for (int stage = 0; stage < 3; ++stage) {
        const bool image = op.can_make_temporary(op.size(0)),
                   mask = op.can_make_temporary(op.size(0), op.mask_depth(0));
        if (!image || !mask) op.stop(kSame);
    }
    op.make_result(kSame);
    if (!op.can_lock_result_mask()) op.abandon_result(kSame);
}

void rotates_by_shears_with_frame(Rehearsal& op) {
    op.clears_error();
    op.lock(0, kSame);
    for (int stage = 0; stage < 3; ++stage) op.make_temporary(op.size(0), kSame);
    op.make_result(kSame);
}

void makes_a_gradient(Rehearsal& op) {
    op.clears_error();
    op.make_result_of(kAskedSize, 32, 6);
}

// --- operations -----------------------------------------------------------------------------------------------------

void add(Rehearsal& op) {
    looks(op);
    op.lock(1, 19);
    op.make_result(6, true);
}

void subtract(Rehearsal& op) {
    looks(op);
    op.lock(1, 22);
    op.make_result(6);
}

void compare(Rehearsal& op) {
    looks(op);
    op.lock(1, 50);
}

void difference(Rehearsal& op) {
    op.lock(0, kSame);
    op.lock(1, kSame);
    op.make_result(kSame);
}

void composite(Rehearsal& op) {
    looks(op);
    op.lock(1, 14);
    op.make_result(6);
    const bool ignores_mask = op.depth(0) == 16 && op.depth(1) == 16;
    if (!ignores_mask && op.has_mask(1) && !op.can_lock_mask(1)) op.stop_with_result(kSame);
    if (!op.client_form() && op.has_mask(0)) op.copy_mask(9);
}

void composite_with_mask(Rehearsal& op) {
    looks(op);
    op.lock(1, 14);
    op.lock(2, 9);
    if (op.size(0).empty()) op.stop(16);  // the overlay lies beside it
    op.make_result(6);
}

void transition(Rehearsal& op) {
    looks(op);
    op.lock(1, 14);
    op.lock(2, 14);
    op.make_result(6);
}

void convolute(Rehearsal& op) {
    looks_at_a_region(op);
    op.make_temporary(op.size(0), 5);
    op.make_result(6);
}

void pixelate(Rehearsal& op) {
    looks_at_a_region(op);
    op.make_result(kSame);
}

void stretch(Rehearsal& op) {
    looks(op);
    const bool masked = op.has_mask(0);
    op.make_result_of(kAskedSize, op.depth(0), op.client_form() ? 6 : kSame, masked);
    const Size between = {kAskedSize.width, op.size(0).height};
    if (!masked) {
        if (!op.can_make_temporary(between)) op.set_code(5);
        return;
    }
    const bool source = op.can_lock_mask(0), result = op.can_lock_result_mask();
    if (!source || !result) op.stop_with_result(4);
    const bool image = op.can_make_temporary(between), mask = op.can_make_temporary(between);
    if (!image || !mask) op.set_code(5);
}

void trim(Rehearsal& op) {
    looks(op);
    op.make_result_of({5, 5}, op.result_depth(), 6);  // the rectangle's
    if (!op.client_form() && op.has_mask(0)) op.copy_mask(kSame);
}

void convert_to_picture(Rehearsal& op) {
    op.clears_error();
    op.make_result_of(kUsualSize, 32, kSame);
    if (op.string_has_mask(0)) op.can_lock_result_mask();
}

void convert_to_string(Rehearsal& op) {
    op.clears_error();
    op.lock(0, kSame);
    const bool masked = op.has_mask(0);
    if (op.size(0).width < 0 || op.size(0).height < 0) op.stop(kSame);  // no string is as long as that
    if (masked) op.can_lock_mask(0);
    op.need("REALBuildString");
}

void make_memory_block(Rehearsal& op) {
    looks_at_a_region(op);
    op.has_mask(0);
    op.need("newMemoryBlock");
    op.need("memoryBlockGetPtr");
}

// A picture that cannot be locked is described by what can.
void info(Rehearsal& op) {
    op.clears_error();
    if (!op.can_lock(0)) {
        const bool world = op.picture(0)->backing() == host::Backing::graphics_world;
        if (!(op.call("REALLockPictureDescription") && world)) {
            op.call("REALLockPictureDescription");
            op.call("lockPictureDescription");
        }
    }
    op.need("REALBuildString");
}

void screen_capture(Rehearsal& op) {
    op.clears_error();
    op.need("REALBuildPictureFromBuffer");
}

// --- forms that lack `extends`: what is declared first arrives as the picture ---------------------------------------

void gets_a_rectangle_for_a_picture(Rehearsal& op) { looks(op); }

void gets_a_number_for_a_mask(Rehearsal& op) {
    looks(op);
    op.call("lockPictureDescription");
    op.stop(9);
}

void gets_nil_for_a_matrix(Rehearsal& op) { op.refuses(24); }

// --- members of classes ---------------------------------------------------------------------------------------------

void multiplies_by_nil(Rehearsal& op) { op.stop(kSame); }
void makes_a_matrix(Rehearsal& op) { op.need("PluginNewInstance"); }

void reads_an_array(Rehearsal& op) {
    if (!op.call("RuntimeUBound")) {
        op.call("RuntimeDirectReadIntArray");  // of no upper bound, 0, there is one element
        return;
    }
    for (int i = 0; i < 3; ++i) op.call("RuntimeDirectReadIntArray");
}

void takes_a_picture(Rehearsal& op) {
    op.call("lockPictureDescription");
    if (op.call("REALGetPictureMask") && op.picture(1)->mask()) op.call("lockPictureDescription");
}

void gives_a_picture(Rehearsal& op) {
    op.clears_error();
    if (op.picture(0)) return;
    const bool masked = op.has_mask(0);
    op.make_temporary(op.size(0), kSame);  // dropped if what follows fails
    if (masked && !op.can_lock_new_mask()) op.stop(kSame);
}

struct Row {
    std::string_view begins;  // of the declaration, a member's class before it
    CourseOf course;
};

// Of what has no usual course. The first row whose text the declaration begins with counts.
constexpr Row kCourses[] = {
    {"TRV_GetLastError(", nothing_can_fail},
    {"TRV_GetErrorMessage(", [](Rehearsal& op) { op.need("REALBuildString"); }},
    {"TRV_Add(", add},
    {"TRV_Subtract(", subtract},
    {"TRV_AdjustRGB(rect as TRV_Rectangle, cm", gets_nil_for_a_matrix},
    {"TRV_AdjustRGB(", gets_a_rectangle_for_a_picture},
    {"TRV_AdjustRGB_InPlace(", gets_a_rectangle_for_a_picture},
    {"TRV_AdjustRGBWithMask(mask as picture, cm", gets_nil_for_a_matrix},
    {"TRV_AdjustRGBWithMask(", gets_a_number_for_a_mask},
    {"TRV_GetAverageRGB(", gets_a_rectangle_for_a_picture},
    {"picture.TRV_Compare(", compare},
    {"picture.TRV_Difference(", difference},
    {"TRV_Composite(extends p as picture, overlay", composite},
    {"TRV_Composite(extends cp", composite},
    {"TRV_CompositeWithMask(", composite_with_mask},
    {"TRV_Transition(", transition},
    {"TRV_FlipRotate(", flips_and_turns},
    {"TRV_ShearHorizontal(extends p as picture, width as integer, height as integer, shear as double, frame",
     shears_with_frame},
    {"TRV_ShearHorizontal(", shears},
    {"TRV_ShearVertical(extends p as picture, width as integer, height as integer, shear as double, frame",
     shears_with_frame},
    {"TRV_ShearVertical(", shears},
    {"TRV_FreeRotateByShear(extends p as picture, rotation as double, frame", rotates_by_shears_with_frame},
    {"TRV_FreeRotateByShear(", rotates_by_shears},
    {"picture.TRV_FreeRotateDirect(", rotates_directly},
    {"TRV_Convolute(", convolute},
    {"TRV_MakeMemoryBlock(", make_memory_block},
    {"TRV_Pixelate(", pixelate},
    {"TRV_Stretch(", stretch},
    {"TRV_Trim(", trim},
    {"TRV_ConvertToPicture(", convert_to_picture},
    {"TRV_ConvertToString(", convert_to_string},
    {"TRV_Info(", info},
    {"TRV_ScreenCapture(", screen_capture},
    {"TRV_MakeGradient(", makes_a_gradient},
    {"TRV_MakeDoubleGradient(", makes_a_gradient},
    {"TRV_Rectangle.MessageBox(", shows_text},
    {"TRV_Rectangle.", nothing_can_fail},
    {"TRV_ColorMatrix.MessageBox(", shows_text},
    {"TRV_ColorMatrix.Multiply(factor as double)", multiplies_by_nil},
    {"TRV_ColorMatrix.Multiply(", makes_a_matrix},
    {"TRV_ColorMatrix.Invert(", multiplies_by_nil},
    {"TRV_ColorMatrix.", nothing_can_fail},
    {"TRV_Convolution.MessageBox(", shows_text},
    {"TRV_Convolution.SetCoefficients(", reads_an_array},
    {"TRV_ClientPicture.operator_convert(p", takes_a_picture},
    {"TRV_ClientPicture.operator_convert(", gives_a_picture},
};

CourseOf told_course_of(const Callable& method) {
    const std::string text = full_declaration(method);
    const auto* const row =
        std::ranges::find_if(kCourses, [&](const Row& each) { return text.starts_with(each.begins); });
    return row == std::end(kCourses) ? nullptr : row->course;
}

// Of an operation that changes pixels, or looks at them: it takes a region, a mask, or all of the picture.
CourseOf usual_course_of(const Callable& method) {
    const describe::Operation* const about = reference::description_of(method);
    if (!about || !method.extends()) return nullptr;
    const std::string second = method.parameters.size() > 1 ? method.parameters[1].name : "";
    const bool gives_object = method.declaration.result && method.declaration.result->is_object();
    if (second == "mask") return changes_by_mask;
    if (second != "rect") return gives_object ? changes_a_copy : looks;
    if (!gives_object) return looks_at_a_region;
    return is_of(about->keeps_mask, method) ? changes_a_region_and_keeps_the_mask : changes_a_region;
}

}  // namespace

bool has_usual_course(const Callable& method) { return !told_course_of(method); }

CourseOf course_of(const Callable& method) {
    if (const CourseOf told = told_course_of(method)) return told;
    if (const CourseOf usual = usual_course_of(method)) return usual;
    throw std::runtime_error("tests/faults/courses.cpp tells no course of " + full_declaration(method));
}

}  // namespace tarvo::test
