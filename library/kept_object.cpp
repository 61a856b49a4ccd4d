#include "kept_object.h"

#include <cstring>
#include <memory>

#include "engine.h"
#include "failure.h"
#include "kept_picture.h"
#include "shown_text.h"

namespace tarvo::library {
namespace {

host::Instance& instance_in(const host::ObjectRef& reference) {
    return dynamic_cast<host::Instance&>(*reference.get());
}

}  // namespace

bool is_kept_as_picture(const host::Caller& caller, const host::RegisteredClass& cls) {
    return caller.fit_of_class(cls.name, host::type_named("picture")) == host::Fit::converted;
}

host::ObjectRef instance_of(host::Caller& caller, const tarvo_object& object) {
    if (object.picture) {
        const host::Value picture = caller.host().new_picture(*object.picture);
        const host::Value made = caller.convert(picture, host::type_named(object.cls.name));
        return std::get<host::ObjectRef>(made);
    }
    host::ObjectRef made = caller.host().new_instance(object.cls);
    if (!made) throw std::bad_alloc();
    if (!object.data.empty()) std::memcpy(instance_in(made).data(), object.data.data(), object.data.size());
    return made;
}

void keep(host::Caller& caller, const host::ObjectRef& instance, tarvo_object& object) {
    if (!is_kept_as_picture(caller, object.cls)) {
        const auto* data = static_cast<const std::byte*>(instance_in(instance).data());
        object.data.assign(data, data + object.cls.data_size);
        return;
    }
    const host::Value converted = caller.convert(instance, host::type_named("picture"));
    object.picture.reset();
    if (!host::is_nil(converted))
        object.picture =
            host::PictureValue::of(dynamic_cast<const host::Picture&>(*std::get<host::ObjectRef>(converted).get()));
}

}  // namespace tarvo::library

using namespace tarvo::library;

tarvo_status tarvo_object_new(const char* class_name, tarvo_object** object, tarvo_error** error) {
    if (object) *object = nullptr;
    return guarded(error, [&] {
        require(class_name, "class_name");
        require(object, "object");
        const tarvo::host::RegisteredClass* cls = registry().find_class(class_name);
        if (!cls) throw wrong_use("there is no class " + tarvo::host::quoted(class_name));
        CallHost call({});
        auto made = std::make_unique<tarvo_object>(*cls);
        const tarvo::host::ObjectRef instance = instance_of(call.caller(), *made);
        keep(call.caller(), instance, *made);
        *object = made.release();
    });
}

const char* tarvo_object_class(const tarvo_object* object) { return object ? object->cls.name.c_str() : ""; }
tarvo_object* tarvo_object_retain(tarvo_object* object) { return retained(object); }
void tarvo_object_release(tarvo_object* object) { released(object); }
