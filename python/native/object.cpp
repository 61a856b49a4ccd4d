#include "object.h"

#include <memory>

#include "types.h"
#include "watch.h"

namespace tarvo::python {

Types& types() {
    static Types* const types = new Types;
    return *types;
}

Object::Object(const std::string& class_name) {
    run([&](tarvo_error** error) { return tarvo_object_new(class_name.c_str(), &object_, error); });
}

nb::object new_object(const std::string& class_name, tarvo_object* owned) {
    std::unique_ptr<tarvo_object, void (*)(tarvo_object*)> kept(owned, &tarvo_object_release);
    const auto known = types().objects.find(class_name);
    if (known == types().objects.end()) throw nb::type_error(("there is no class " + class_name).c_str());
    nb::object made = nb::inst_alloc(known->second.type);
    new (nb::inst_ptr<Object>(made)) Object(kept.release());
    nb::inst_mark_ready(made);
    return made;
}

void define_object(nb::module_& module) {
    nb::class_<Object>(module, "Object", nb::is_weak_referenceable()).def(nb::init<const std::string&>());
    module.def("set_picture_type", [](nb::type_object type) { types().picture = type; });
    module.def("set_object_type", [](const std::string& name, nb::type_object type, nb::object convert) {
        types().objects[name] = {type, convert};
    });
}

}  // namespace tarvo::python
