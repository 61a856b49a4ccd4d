#include "region.h"

#include "rectangle.h"

namespace tarvo::plugin {

Region select_region(const TRV_Picture& picture, REALobjectStruct* rectangle) {
    const Region whole = whole_of(picture);
    const TRV_Rectangle_Data* const data = TRV_Rectangle_GetData(rectangle);
    if (!data) return whole;
    return {std::max(data->left, whole.left), std::max(data->top, whole.top), std::min(data->right(), whole.right),
            std::min(data->bottom(), whole.bottom)};
}

}  // namespace tarvo::plugin
