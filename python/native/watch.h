#pragma once

// What is asked while the library works without the interpreter: the caller's `progress`, and whether Ctrl-C was
// pressed.

#include <nanobind/nanobind.h>

#include <chrono>

#include "errors.h"

namespace tarvo::python {

class Watch {
public:
    // `progress` is None or a callable.
    explicit Watch(nb::handle progress) : progress_(progress), asked_(Clock::now()) {
        if (!progress.is_none() && !PyCallable_Check(progress.ptr()))
            raise_type_error("progress must be callable or None");
    }

    template <class Options>
    void put_into(Options& options) {
        options.yield = &ask;
        options.context = this;
    }

    // Runs `work(&error)`, which returns a status, without the interpreter, and raises what has failed.
    template <class Work>
    void run(Work work) {
        tarvo_error* error = nullptr;
        tarvo_status status;
        {
            nb::gil_scoped_release released;
            status = work(&error);
        }
        if (raised_) {
            tarvo_error_free(error);
            throw nb::python_error();
        }
        if (status != TARVO_OK) raise(status, error);
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr Clock::duration kPatience = std::chrono::milliseconds(20);

    // The exception stays set in the thread until the library has returned.
    static int ask(void* context) {
        auto* self = static_cast<Watch*>(context);
        if (self->raised_) return 1;
        const Clock::time_point now = Clock::now();
        const bool late = now - self->asked_ >= kPatience;
        if (self->progress_.is_none() && !late) return 0;
        nb::gil_scoped_acquire acquired;
        if (late) {
            self->asked_ = now;
            if (PyErr_CheckSignals() != 0) return self->stop_raised();
        }
        if (self->progress_.is_none()) return 0;
        PyObject* answer = PyObject_CallNoArgs(self->progress_.ptr());
        if (!answer) return self->stop_raised();
        const int goes_on = answer == Py_None ? 1 : PyObject_IsTrue(answer);
        Py_DECREF(answer);
        return goes_on < 0 ? self->stop_raised() : goes_on == 0;
    }
    int stop_raised() {
        raised_ = true;
        return 1;
    }

    nb::handle progress_;
    Clock::time_point asked_;
    bool raised_ = false;
};

// Runs short work in the same way, but nobody is asked.
template <class Work>
void run(Work work) {
    Watch{nb::none()}.run(work);
}

}  // namespace tarvo::python
