#include "interrupts.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace tarvo::cli {

namespace {

constexpr int kEndings[] = {SIGINT, SIGTERM, SIGHUP};
// So many files are watched at a time, which is more than threads write.
constexpr std::size_t kMostFiles = 256;

}  // namespace

// A file that is being written. Its thread holds the endings back while it changes it.
struct PartFile {
    enum class State : std::uint8_t { none, making, made };
    std::atomic<State> state = State::none;
    int folder = -1;
    char name[64] = "";
};

namespace {

using State = PartFile::State;

// What the signals' handler looks at, which may run on another thread than those that write.
struct PartFiles {
    std::array<PartFile, kMostFiles> files;
    std::atomic<bool> ending = false;

    PartFile* take() {
        for (PartFile& file : files) {
            State none = State::none;
            if (file.state.compare_exchange_strong(none, State::making)) return &file;
        }
        return nullptr;
    }

    // For the handler: waits for files that come to be right now, since nobody else could remove them. From now on no
    // new ones are made.
    void remove_all() {
        ending = true;
        constexpr timespec kMillisecond{0, 1000000};
        for (PartFile& file : files) {
            for (int tries = 0; file.state == State::making && tries < 1000; ++tries)
                ::nanosleep(&kMillisecond, nullptr);
            if (file.state == State::made) ::unlinkat(file.folder, file.name, 0);
        }
    }
};

constinit PartFiles part_files;
static_assert(std::atomic<State>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

sigset_t endings() {
    sigset_t set;
    ::sigemptyset(&set);
    for (const int signal : kEndings) ::sigaddset(&set, signal);
    return set;
}

void hold_back(sigset_t* before) {
    const sigset_t set = endings();
    ::pthread_sigmask(SIG_BLOCK, &set, before);
}

// This happens once: when it returns the signal comes again, and ends the tool.
void on_ending(int signal) {
    part_files.remove_all();
    ::raise(signal);
}

// Replaces one handler by another, where it is the one that is there.
void handle_endings(void (*before)(int), void (*handler)(int)) {
    for (const int signal : kEndings) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler != before) continue;
        action.sa_handler = handler;
        action.sa_mask = endings();
        action.sa_flags = handler == on_ending ? SA_RESETHAND : SA_RESTART;
        ::sigaction(signal, &action, nullptr);
    }
}

}  // namespace

void WatchedPart::tell(tarvo_part_file now, int folder, const char* name) noexcept {
    const auto let_through = [this] { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); };
    switch (now) {
        case TARVO_PART_FILE_MAKING:
            hold_back(&before_);
            file_ = part_files.take();
            // The tool is at its end: this thread is not to begin anything.
            while (part_files.ending) {
                if (file_) file_->state = State::none;
                ::pause();
            }
            return;
        case TARVO_PART_FILE_MADE:
            if (file_) {
                file_->folder = folder;
                std::snprintf(file_->name, sizeof file_->name, "%s", name);
                file_->state = State::made;
            }
            return let_through();
        case TARVO_PART_FILE_GONE:
            hold_back(nullptr);
            if (file_) file_->state = State::none;
            file_ = nullptr;
            return let_through();
    }
}

namespace {

std::atomic<bool> was_interrupted = false;

void on_first_ending(int) {
    was_interrupted = true;
    handle_endings(on_first_ending, on_ending);
}

}  // namespace

void handle_interrupts() {
    ::signal(SIGXFSZ, SIG_IGN);  // the call that writes fails instead
    handle_endings(SIG_DFL, on_ending);
}

InterruptedSoftly::InterruptedSoftly() { handle_endings(on_ending, on_first_ending); }

InterruptedSoftly::~InterruptedSoftly() { handle_endings(on_first_ending, on_ending); }

bool interrupted() { return was_interrupted; }

}  // namespace tarvo::cli
