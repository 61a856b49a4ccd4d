#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "failure.h"
#include "kept_object.h"
#include "kept_picture.h"
#include "tarvo.h"

namespace tarvo::library {

// A value with what it points to.
class KeptValue {
public:
    KeptValue() = default;
    ~KeptValue();
    KeptValue(const KeptValue&) = delete;
    KeptValue& operator=(const KeptValue&) = delete;

    const tarvo_value& value() const { return value_; }
    // As people read it.
    std::string text() const;

    // What objects are called.
    void set_class(std::string name) { class_ = std::move(name); }
    void set(std::int32_t integer);
    void set(double real);
    void set(bool boolean);
    void set(host::Color color);
    void set_bytes(std::string bytes);
    void set_integers(std::vector<std::int32_t> integers);
    // Take one reference over.
    void set_picture(tarvo_picture* picture);
    void set_object(tarvo_object* object);

private:
    tarvo_value value_ = {};
    std::string class_;
    std::string bytes_;
    std::vector<std::int32_t> integers_;
};

}  // namespace tarvo::library

struct tarvo_result {
    struct Output {
        std::string name;
        tarvo::library::KeptValue value;
    };
    tarvo::library::KeptValue value;
    std::deque<Output> outputs;
    std::int32_t code = 0;
    tarvo::library::KeptError defect;
    std::string operation;
    double milliseconds = 0;
};
