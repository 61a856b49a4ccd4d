#include "tables.h"

namespace tarvo::describe {
namespace {

constexpr const Family* kFamilies[] = {&kTone, &kCombine, &kGeometry, &kFilters, &kInterchange, &kErrors};
constexpr const Class* kClasses[] = {&kRectangle, &kColorMatrix, &kConvolution, &kClientPicture};

}  // namespace

std::span<const Family* const> families() { return kFamilies; }
std::span<const Class* const> classes() { return kClasses; }

}  // namespace tarvo::describe
