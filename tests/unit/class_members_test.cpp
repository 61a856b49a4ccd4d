// Members of the plugin's classes, called as no host calls them: for nil, and for properties that they do not answer.

#include <algorithm>
#include <span>
#include <string_view>

#include "client_picture.h"
#include "color_matrix.h"
#include "convolution_class.h"
#include "locked_picture.h"
#include "rectangle.h"

namespace tarvo::test {
namespace {

using Member = void(REALobjectStruct*);
using PictureGetter = REALpictureStruct*(REALobjectStruct*, REALword);

template <class Function>
Function* function_at(void* address) {
    return reinterpret_cast<Function*>(address);
}

const REALpropertyDefinition& property(const REALclassDefinition& definition, std::string_view name) {
    const std::span all(definition.properties, static_cast<std::size_t>(definition.propertyCount));
    return *std::ranges::find_if(all, [&](const REALpropertyDefinition& each) { return each.name == name; });
}

TEST_F(LockedPicture, NothingIsMadeOrUnmadeOfNil) {
    const auto before = host.accounts();
    for (const REALclassDefinition* definition :
         {&TRV_Rectangle_Class, &TRV_ColorMatrix_Class, &TRV_Convolution_Class, &TRV_ClientPicture_Class}) {
        ASSERT_TRUE(definition->constructor) << definition->name;
        function_at<Member>(definition->constructor)(nullptr);
        if (definition->destructor) function_at<Member>(definition->destructor)(nullptr);
    }
    EXPECT_EQ(host.accounts(), before);
    EXPECT_TRUE(host.complaints().empty());
}

TEST_F(LockedPicture, AClientPicturesPictureIsAnsweredForItsOwnPropertyAlone) {
    const ObjectRef picture = make({.width = 2, .height = 2}), client = host.new_instance("TRV_ClientPicture");
    auto* const object = static_cast<REALobjectStruct*>(client.handle());
    TRV_ClientPicture_GetData(object)->pic = static_cast<REALpictureStruct*>(ObjectRef(picture).hand_over());
    const REALpropertyDefinition& pic = property(TRV_ClientPicture_Class, "pic");
    const auto getter = function_at<PictureGetter>(pic.getter);
    const auto before = host.accounts();
    EXPECT_EQ(getter(nullptr, pic.parameter), nullptr);
    EXPECT_EQ(getter(object, pic.parameter + 1), nullptr);
    REALpictureStruct* const given = getter(object, pic.parameter);
    EXPECT_EQ(given, handle(picture));
    ObjectRef::adopt(host.objects().find(given));  // and drops the reference that came with it
    EXPECT_EQ(host.accounts(), before);
}

}  // namespace
}  // namespace tarvo::test
