#include "interrupts.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>

namespace tarvo::cli {

namespace {

constexpr int kEndings[] = {SIGINT, SIGTERM, SIGHUP};

// Changes only while these signals are held back.
struct PartFile {
    bool exists = false;
    int folder = -1;
    char name[64] = "";
};
PartFile part_file;

// This happens once: when it returns the signal comes again, and ends the tool.
void on_ending(int signal) {
    if (part_file.exists) ::unlinkat(part_file.folder, part_file.name, 0);
    ::raise(signal);
}

sigset_t endings() {
    sigset_t set;
    ::sigemptyset(&set);
    for (const int signal : kEndings) ::sigaddset(&set, signal);
    return set;
}

class Watch final : public host::PartFileWatch {
public:
    void making() noexcept override { hold_back(&before_); }
    void made(int folder, const char* name) noexcept override {
        part_file.folder = folder;
        std::snprintf(part_file.name, sizeof part_file.name, "%s", name);
        part_file.exists = true;
        let_through();
    }
    void gone() noexcept override {
        hold_back(nullptr);
        part_file.exists = false;
        let_through();
    }

private:
    static void hold_back(sigset_t* before) {
        const sigset_t set = endings();
        ::sigprocmask(SIG_BLOCK, &set, before);
    }
    void let_through() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }

    sigset_t before_{};
};

}  // namespace

void handle_interrupts() {
    ::signal(SIGXFSZ, SIG_IGN);  // the call that writes fails instead
    for (const int signal : kEndings) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
        action.sa_handler = on_ending;
        action.sa_mask = endings();
        action.sa_flags = SA_RESETHAND;
        ::sigaction(signal, &action, nullptr);
    }
}

host::PartFileWatch& part_file_watch() {
    static Watch watch;
    return watch;
}

}  // namespace tarvo::cli
