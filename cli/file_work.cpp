#include "file_work.h"

#include <chrono>
#include <cstdio>

#include "hash_line.h"
#include "library_errors.h"
#include "loss_rule.h"
#include "picture_io.h"
#include "value_text.h"

namespace tarvo::cli {
namespace {

// What the next call is made on.
class InHand {
public:
    InHand() = default;
    explicit InHand(Picture picture) : picture_(std::move(picture)) {}
    explicit InHand(Object client) : client_(std::move(client)) {}

    explicit operator bool() const { return picture_ || client_; }
    Value value() const { return client_ ? Value(client_) : Value(picture_); }
    const Picture& picture() const { return picture_; }
    const Object& client() const { return client_; }

    int width() const { return client_ ? property("width") : picture_.width(); }
    int height() const { return client_ ? property("height") : picture_.height(); }
    std::string size_text() const { return std::to_string(width()) + " x " + std::to_string(height()); }
    // Returns a text such as "640 x 480, 32 bits, mask".
    std::string text() const {
        const int depth = client_ ? property("depth") : picture_.depth();
        return (client_ ? "client picture " : "") + size_text() + ", " + language::depth_text(depth) +
               (picture_.has_mask() ? ", mask" : "");
    }

private:
    int property(const char* name) const {
        return tarvo::call(std::string(kClientPicture) + "." + name, client_).integer();
    }

    Picture picture_;
    Object client_;
};

// Keeps the losses of what it passes on.
class LossKeeper final : public Listener {
public:
    LossKeeper(Listener& to, LossRule rule, std::vector<Loss>& losses) : to_(to, rule), losses_(losses) {}

    void say(const std::string& line) override { to_.say(line); }
    void answer(const std::string& line) override { to_.answer(line); }
    void warn(const std::string& line) override { to_.warn(line); }
    void note(tarvo_note kind, const std::string& line) override {
        if (TARVO_IS_LOSS(kind)) losses_.push_back({kind, line});
        to_.note(kind, line);
    }

private:
    RuledListener to_;
    std::vector<Loss>& losses_;
};

class Course {
public:
    Course(const FileWork& work, const Chain& chain, Listener& listener, FileRecord& record)
        : work_(work), chain_(chain), listener_(listener, work.options.losses, record.losses), record_(record) {}

    // Up to what the last call has made.
    void make() {
        if (!work_.input.empty()) read();
        for (const Call& call : chain_.calls()) apply(call);
    }

    void run() {
        make();
        if (in_hand_) {
            record_.width = in_hand_.width();
            record_.height = in_hand_.height();
        }
        if (!work_.output.empty()) write();
    }

    Picture picture() const {
        return in_hand_.client() ? convert(kPicture, in_hand_.client()).picture() : in_hand_.picture();
    }

private:
    void read() {
        const bool draft = work_.options.draft && !work_.client;
        const PictureFile file =
            read_picture(work_.input, work_.options, listener_, false, draft ? chain_.calls().front().text : "");
        in_hand_ = InHand(file.picture);
        listener_.say(work_.input + ": " + in_hand_.size_text() + ", " + file.pixels);
        tell_hash(work_.input);
        if (!work_.client) return;
        const Object client(kClientPicture);
        convert(kClientPicture, client, {Argument(file.picture)});
        in_hand_ = InHand(client);
    }

    // Makes one call; what is a picture is what the next call is made on.
    void apply(const Call& call) {
        const Result result = made(call);
        if (const auto defect = result.defect())
            listener_.warn(operation_failure(call.label(defect->operation()), *defect));
        const bool is_picture = take(result);
        record_.made_picture = record_.made_picture || call.makes_picture;
        const std::string name = result.operation();
        char time[32];
        std::snprintf(time, sizeof time, "%.1f ms", result.milliseconds());
        listener_.say(name + ": " + (in_hand_ ? in_hand_.text() + ", " : "") + time);
        if (is_picture) tell_hash(name);
        if (!is_picture && !result.is_nil()) listener_.answer(name + " = " + result.text());
        for (const std::string& output : result.outputs())
            if (output != "message") listener_.answer(output + " = " + result.text(output));
    }

    Result made(const Call& call) {
        CallOptions options;
        options.read_files = true;
        options.client_pictures = true;
        options.note = [&](tarvo_note kind, const std::string& text) {
            const bool names_operation = kind != TARVO_NOTE_WAITING && kind != TARVO_NOTE_MESSAGE;
            listener_.note(kind, names_operation ? call.numbered(text) : text);
        };
        work_.options.limits.put_into(options);
        try {
            return tarvo::apply_on(call.text, in_hand_.value(), options);
        } catch (const Error& error) {
            throw failure(call, error);
        }
    }

    static CommandError failure(const Call& call, const Error& error) {
        if (error.operation().empty()) return command_error(error);
        const bool wrong = error.status() == TARVO_USE;
        return {ExitStatus::operation_failed,
                wrong ? call.numbered(error.what()) : operation_failure(call.label(error.operation()), error),
                error.code()};
    }

    bool take(const Result& result) {
        if (result.value().type == TARVO_PICTURE)
            in_hand_ = InHand(result.picture());
        else if (result.value().type == TARVO_OBJECT && result.object().class_name() == kClientPicture)
            in_hand_ = InHand(result.object());
        else
            return false;
        return true;
    }

    // A line as `tarvo hash` prints it, with what has made the picture.
    void tell_hash(const std::string& maker) {
        if (!work_.hash) return;
        record_.sha256 = picture().sha256();
        std::string line = hash_line(record_.sha256, maker);
        line.pop_back();
        listener_.answer(line);
    }

    void write() {
        const Picture picture = this->picture();
        const std::string pixels = write_picture(picture, work_.output, work_.options, listener_);
        listener_.say(work_.output + ": " + in_hand_.size_text() + ", " + pixels);
    }

    // Makes a client picture of a picture, or the reverse.
    Result convert(const char* wanted, const Object& client, const std::vector<Argument>& arguments = {}) const {
        CallOptions options;
        work_.options.limits.put_into(options);
        try {
            return tarvo::call(std::string(kClientPicture) + ".operator_convert", client, arguments, options);
        } catch (const Error& error) {
            throw CommandError(ExitStatus::operation_failed,
                               std::string("no ") + wanted + " can be made" + refusal_text(error));
        }
    }

    const FileWork& work_;
    const Chain& chain_;
    LossKeeper listener_;
    FileRecord& record_;
    InHand in_hand_;
};

}  // namespace

Picture make_picture(const FileWork& work, const Chain& chain, Listener& listener) {
    FileRecord record;
    Course course(work, chain, listener, record);
    course.make();
    return course.picture();
}

FileRecord work_on_file(const FileWork& work, const Chain& chain, Listener& listener) {
    const auto begin = std::chrono::steady_clock::now();
    FileRecord record;
    try {
        Course(work, chain, listener, record).run();
    } catch (...) {
        const CommandError error = handled_error();
        record.status = error.status();
        record.message = error.what();
        record.code = error.code();
    }
    record.milliseconds = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
    return record;
}

}  // namespace tarvo::cli
