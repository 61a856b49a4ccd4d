// Every command, while it waits for something that never comes, is ended by signals as a shell expects it.

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "tool.h"

namespace tarvo::cli {
namespace {

// A port of this machine that takes connections and never answers.
class SilentServer {
public:
    SilentServer() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        const bool listens = ::bind(socket_, any, size) == 0 && ::listen(socket_, 9) == 0;
        if (!listens || ::getsockname(socket_, any, &size) != 0) throw std::runtime_error("nothing can be listened to");
        port_ = ntohs(address.sin_port);
    }
    ~SilentServer() { ::close(socket_); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

    // As the name of an X display.
    std::string display() const {
        constexpr int kFirstPort = 6000;
        return "127.0.0.1:" + std::to_string(port_ - kFirstPort);
    }

private:
    const int socket_;
    int port_ = 0;
};

class Signals : public ToolTest {
protected:
    Signals() {
        ::mkfifo(file("never.ppm").c_str(), 0600);  // nobody writes to it
        ::mkfifo(file("full").c_str(), 0600);       // nobody reads what is in it
        full_ = ::open(file("full").c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        const std::string block(4096, 'x');
        while (::write(full_, block.data(), block.size()) > 0) continue;
    }
    ~Signals() override { ::close(full_); }

    // Begins a line of the shell, which becomes the tool, and waits until the tool waits.
    pid_t start_waiting(const std::string& line) const {
        const std::string programs = std::filesystem::path(TARVO_TOOL).parent_path();
        const pid_t process =
            start({"/bin/sh", "-c", "cd \"$0\" && PATH=\"$1:$PATH\" && eval \"exec $2\"", folder(), programs, line});
        for (int calm = 0, tries = 0; calm < 20 && tries < 5000; ++tries) {
            calm = state_of(process) == "S" ? calm + 1 : 0;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return process;
    }

    // How a signal ends the tool. One that does not end it in ten seconds is killed.
    Ending ending_by(int signal, pid_t process) const {
        ::kill(process, signal);
        for (int tries = 0; tries < 10000 && state_of(process) != "Z"; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        ::kill(process, SIGKILL);
        return wait(process);
    }

private:
    // "S" for a tool that waits, "Z" for one that has ended; empty for another program.
    static std::string state_of(pid_t process) {
        std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
        std::string number, name, state;
        stat >> number >> name >> state;
        return name == "(tarvo)" ? state : "";
    }

    int full_ = -1;
};

TEST_F(Signals, EndEveryCommand) {
    const SilentServer server;
    const std::pair<std::string, std::string> lines[] = {
        {"apply", "tarvo apply never.ppm 'Info()' -o out.ppm"},
        {"capture", "tarvo capture --display " + server.display() + " -o out.png"},
        {"convert", "tarvo convert never.ppm -o out.png"},
        {"hash", "tarvo hash never.ppm"},
        {"help", "tarvo help Stretch >full"},
        {"list", "tarvo list >full"},
        {"verify", "tarvo verify never.ppm"},
    };
    std::istringstream help(tool({"--help"}).out);
    std::set<std::string> commands, tried;
    for (std::string line; std::getline(help, line);)
        if (!commands.empty() || line == "Subcommands:") {
            std::istringstream words(line);
            std::string name;
            if (!(words >> name)) break;
            commands.insert(name);
        }
    for (const auto& [name, line] : lines) {
        if (!commands.contains(name)) continue;  // a build without a screen
        tried.insert(name);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            EXPECT_EQ(ending_by(signal, start_waiting(line)).status, -signal) << line;
            EXPECT_EQ(entries(), (std::vector<std::string>{"full", "never.ppm"})) << line;
        }
    }
    tried.insert("Subcommands:");
    EXPECT_EQ(tried, commands);
}

TEST_F(Signals, AreAStatusOf130InAShell) {
    const Ending run = shell("timeout --preserve-status -k 9 -s INT 0.5 tarvo convert never.ppm -o out.png; exit $?");
    EXPECT_EQ(run.status, 130);
    EXPECT_EQ(shell("timeout --preserve-status -k 9 -s INT 0.5 tarvo list >full; exit $?").status, 130);
}

}  // namespace
}  // namespace tarvo::cli
