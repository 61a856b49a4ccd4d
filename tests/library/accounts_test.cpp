// No call leaves anything in its host, however it ends: well, refused, without memory, stopped at any of its yields.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <sstream>
#include <stdexcept>

#include "engine.h"
#include "samples.h"
#include "temporary_folder.h"

namespace tarvo::library {

namespace {

std::atomic<int> ended = 0;
std::vector<std::string> left;  // what hosts had at their end, a text for each that had anything

}  // namespace

void watch_end(const host::Host& host) {
    ++ended;
    if (host.accounts() != host::Accounts()) left.push_back(host.describe_live_objects());
}

}  // namespace tarvo::library

namespace tarvo::test {
namespace {

int calls_ended() { return library::ended; }

// Nothing is left of a call that ended so, but of one that found no room the object that it had promised to the caller,
// or begun: these go with the host. Such a call is made twice, the second time on white paper.
void expect_nothing_left(tarvo_status status) {
    const bool no_room = status == TARVO_OPERATION || status == TARVO_LIMIT || status == TARVO_MEMORY;
    for (const std::string& objects : std::exchange(library::left, {})) {
        std::istringstream lines(objects);
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            const bool promised = line.starts_with("instance: TRV_ClientPicture;") || line.starts_with("picture: ");
            EXPECT_TRUE(no_room && promised && line.ends_with("; references: 1")) << status << ": " << line;
        }
        EXPECT_LE(count, 2) << objects;
    }
}

using host::Callable;

// Values of every type, good ones and such as most operations refuse.
enum class Kind { good, none, large };
constexpr Kind kKinds[] = {Kind::good, Kind::none, Kind::large};

class Maker {
public:
    Maker(Kind kind, const Picture& other) : kind_(kind), other_(other) {}

    // What a parameter of that type gets.
    Value value(const std::string& type) const {
        const bool none = kind_ == Kind::none, large = kind_ == Kind::large;
        if (type == "integer") return none ? 0 : large ? 2147483647 : 5;
        if (type == "double" || type == "single") return none ? 0.0 : large ? 1e300 : 1.5;
        if (type == "boolean") return !none;
        if (type == "color") return Color{none ? 0u : 0x80A0C0u};
        if (type == "string") return none ? std::string() : string_;
        if (type == "picture") return none ? Value() : Value(other_);
        if (type == "integer()") return std::vector<std::int32_t>(none ? 0 : 5, large ? 1 << 30 : 1);
        if (none || type.rfind("TRV_", 0) != 0) return nullptr;
        return object(type);
    }

    Object object(const std::string& class_name) const {
        if (class_name == "TRV_Rectangle")
            return kind_ == Kind::large ? Rectangle(-30000, 2, 60000, 2147483647) : Rectangle(2, 3, 20, 14);
        const Object made(class_name);
        if (class_name == "TRV_Convolution")
            made.call("SetCoefficients", std::vector<std::int32_t>{1, kind_ == Kind::large ? 1 << 30 : 2, 1});
        if (class_name == "TRV_ClientPicture") made.call("operator_convert", other_);
        return made;
    }

private:
    const Kind kind_;
    const Picture& other_;
    const std::string string_{other_.call("TRV_ConvertToString").bytes()};
};

// All that can be called through the library.
std::vector<const Callable*> all_callables() {
    library::CallHost call({});
    std::vector<const Callable*> all;
    for (const Callable& each : call.caller().callables()) all.push_back(&each);
    return all;
}

// A call with values of that kind. Where there is a parameter `yield` it is left to the library.
class Made {
public:
    Made(const Callable& method, const Maker& maker, const Picture& picture) {
        const bool member = !method.owner.empty() && !method.extends();
        name_ = (member ? method.owner + "." : "") + method.declaration.name;
        bool named = false;
        for (std::size_t i = 0; i < method.parameters.size(); ++i) {
            const host::Parameter& parameter = method.parameters[i];
            const std::string type = host::to_string(parameter.type);
            if (i == 0 && (member || method.extends())) {
                self_ = type == "picture"            ? Value(picture)
                        : type.rfind("TRV_", 0) == 0 ? Value(maker.object(type))
                                                     : maker.value(type);
                continue;
            }
            named = named || parameter.name == "yield";
            if (parameter.name == "yield" || parameter.by_ref) {
                named = true;
                continue;
            }
            if (named)
                arguments_.emplace_back(parameter.name, maker.value(type));
            else
                arguments_.emplace_back(maker.value(type));
        }
    }

    const std::string& name() const { return name_; }
    tarvo_status run(const CallOptions& options = {}) const {
        const tarvo_status status = status_of([&] { call(name_, self_, arguments_, options); });
        expect_nothing_left(status);
        return status;
    }

private:
    std::string name_;
    Value self_;
    std::vector<Argument> arguments_;
};

// Calls `visit` with a call of each method on each kind of values and pictures.
template <class Visit>
void for_each_call(Visit visit) {
    const std::array pictures = {noisy_picture(41, 29), noisy_picture(41, 29, TARVO_RGBA32)};
    for (const Picture& picture : pictures)
        for (const Kind kind : kKinds) {
            const Maker maker(kind, pictures[1]);
            for (const Callable* method : all_callables()) {
                const Made made(*method, maker, picture);
                SCOPED_TRACE(made.name() + " as " + method->declaration.text);
                visit(made);
            }
        }
}

TEST(Accounts, AreZeroAfterEveryCall) {
    int fine = 0, refused = 0, wrong = 0;
    const int before = calls_ended();
    for_each_call([&](const Made& made) {
        const tarvo_status status = made.run();
        fine += status == TARVO_OK;
        refused += status == TARVO_OPERATION || status == TARVO_LIMIT || status == TARVO_MEMORY;
        wrong += status == TARVO_USE;
    });
    EXPECT_GT(fine, 150);
    EXPECT_GT(refused, 50);
    EXPECT_GT(wrong, 5);
    EXPECT_GE(calls_ended() - before, fine + refused + wrong);
}

TEST(Accounts, AreZeroHoweverLittleMemoryThereIs) {
    int without = 0;
    for_each_call([&](const Made& made) {
        for (const int bytes : {1, 4000, 5000, 10000, 14000, 15000, 20000}) {
            CallOptions options;
            options.max_memory = static_cast<std::uint64_t>(bytes);
            without += made.run(options) == TARVO_MEMORY;
        }
        CallOptions few;
        few.max_pixels = 7;
        made.run(few);
    });
    EXPECT_GT(without, 100);
}

// Stopped by what the yield answers, and by what it throws.
TEST(Accounts, AreZeroWhereverACallIsStopped) {
    int stopped = 0;
    for (const bool throws : {false, true})
        for_each_call([&](const Made& made) {
            for (int stop = 1, asked = 0; asked == stop - 1; ++stop) {
                ASSERT_LT(stop, 1000);
                asked = 0;
                CallOptions options;
                options.yield_pixels = 100;
                options.yield = [&] {
                    if (++asked != stop) return false;
                    if (throws) throw std::length_error("enough");
                    return true;
                };
                try {
                    const tarvo_status status = made.run(options);
                    EXPECT_EQ(status == TARVO_CANCELLED, asked == stop);
                    stopped += status == TARVO_CANCELLED;
                } catch (const std::length_error&) {
                    expect_nothing_left(TARVO_CANCELLED);
                    ++stopped;
                }
            }
        });
    EXPECT_GT(stopped, 200);
}

TEST(Accounts, AreZeroAfterFiles) {
    const TemporaryFolder folder;
    const Picture masked = noisy_picture(41, 29, TARVO_RGBA32);
    const int before = calls_ended();
    for (const char* name : {"a.ppm", "a.pam", "a.trv", "a.png", "a.jpg",
#ifdef TARVO_TIFF
                             "a.tif",
#endif
#ifdef TARVO_WEBP
                             "a.webp",
#endif
                             "b.ppm"}) {
        const std::string path = folder.file(name);
        masked.save(path);
        const Picture whole = Picture::open(path);
        EXPECT_EQ(whole.width(), 41);
        std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
        EXPECT_NE(status_of([&] { Picture::open(path); }), TARVO_OK) << name;
        for (int stop = 1, asked = 0; asked == stop - 1; ++stop) {
            asked = 0;
            WriteOptions options;
            options.yield = [&] { return ++asked == stop; };
            status_of([&] { masked.save(path, options); });
        }
        CallOptions options;
        options.read_files = true;
        EXPECT_EQ(status_of([&] { apply("Add(\"" + path + "\")", masked, options); }), TARVO_OK);
        EXPECT_EQ(status_of([&] { apply("Add(\"" + path + ".none.ppm\")", masked, options); }), TARVO_FILE);
    }
    EXPECT_GT(calls_ended() - before, 20);
    expect_nothing_left(TARVO_OK);
}

}  // namespace
}  // namespace tarvo::test
