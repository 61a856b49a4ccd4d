#include "argument_fit.h"

#include <variant>

#include "conversion.h"
#include "names.h"
#include "shown_text.h"

namespace tarvo::language {

using host::Caller;
using host::Fit;
using host::Literal;
using host::same_name;
using host::Type;
using host::TypeKind;

namespace {

struct FitToType {
    const Caller& caller;
    const Type& type;

    std::optional<Fit> operator()(const Literal& literal) const { return std::visit(LiteralFit{*this}, literal); }
    std::optional<Fit> operator()(const FileName&) const { return file(); }
    std::optional<Fit> operator()(const Given& given) const {
        if (const auto fitted = host::fit(given.value, type)) return fitted->fit;
        return host::is_nil(given.value) ? std::nullopt : caller.fit_of_class(host::type_name(given.value), type);
    }
    std::optional<Fit> operator()(const FormulaOrFile& both) const {
        const std::optional<Fit> number = (*this)(both.formula);
        return number ? number : file();
    }

    std::optional<Fit> operator()(const Formula& formula) const {
        if (type.is_object()) return std::nullopt;
        const bool integers = is_of_integers(formula);
        if (type.kind == TypeKind::integer) return integers ? Fit::exact : Fit::loose;
        if (type.kind == TypeKind::real) return integers ? Fit::widened : Fit::exact;
        return std::nullopt;
    }

    std::optional<Fit> operator()(const Form& form) const {
        switch (form.kind) {
            case Form::Kind::rectangle:
            case Form::Kind::border: return caller.fit_of_class("TRV_Rectangle", type);
            case Form::Kind::matrix: return caller.fit_of_class("TRV_ColorMatrix", type);
            case Form::Kind::convolution: return caller.fit_of_class("TRV_Convolution", type);
            case Form::Kind::fit: break;
        }
        return std::nullopt;
    }

    std::optional<Fit> file() const { return caller.fit_of_class("picture", type); }

    struct LiteralFit {
        const FitToType& fit;

        std::optional<Fit> operator()(const std::string&) const {
            if (fit.type.kind == TypeKind::string && !fit.type.array) return Fit::exact;
            return fit.file();
        }
        template <class Plain>
        std::optional<Fit> operator()(const Plain& value) const {
            const auto fitted = host::fit(value, fit.type);
            return fitted ? std::optional(fitted->fit) : std::nullopt;
        }
    };
};

}  // namespace

std::optional<Fit> fit_to_type(const Caller& caller, const Expression& expression, const Type& type) {
    return std::visit(FitToType{caller, type}, expression);
}

std::string wanted_for(const Type& type) {
    if (type.array) return "nil";
    switch (type.kind) {
        case TypeKind::integer: return "an integer";
        case TypeKind::real: return "a number";
        case TypeKind::boolean: return "true or false";
        case TypeKind::color: return "a color (&cRRGGBB)";
        case TypeKind::string: return "a text in quotes";
        case TypeKind::object: break;
    }
    if (same_name(type.name, "picture") || same_name(type.name, "TRV_ClientPicture")) return "a picture file or nil";
    if (same_name(type.name, "TRV_Rectangle")) return "rect(...), border(...) or nil";
    if (same_name(type.name, "TRV_ColorMatrix")) return "matrix(...) or nil";
    if (same_name(type.name, "TRV_Convolution")) return "convolution(...) or nil";
    return "nil (a " + type.name + " cannot be written)";
}

std::string found_in(const ArgumentExpression& argument, std::string_view text) {
    if (const auto* file = std::get_if<FileName>(&argument.value)) return "the file name " + host::quoted(file->path);
    if (const auto* given = std::get_if<Given>(&argument.value)) return host::type_name(given->value);
    const auto* literal = std::get_if<Literal>(&argument.value);
    if (const auto* written = literal ? std::get_if<std::string>(literal) : nullptr)
        return "the text " + host::quoted(*written);
    std::string_view source = text.substr(argument.value_begin, argument.value_end - argument.value_begin);
    while (source.ends_with(' ') || source.ends_with('\t')) source.remove_suffix(1);
    const std::string_view kept = host::beginning(source, 40);
    return host::shown(kept) + (kept.size() < source.size() ? "..." : "");
}

}  // namespace tarvo::language
