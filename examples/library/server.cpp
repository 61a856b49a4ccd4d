// A service on this machine alone: POST a picture file to /apply?call=Stretch(fit(200)), and get a PNG.
//
//     server [PORT]        prints the port that it listens on; without one it takes any
//
// Every request is one call on a thread of its own. Nothing is shared and nothing is kept.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <httplib.h>
#include <tarvo.hpp>

namespace {

constexpr std::size_t kMostBytes = 32 << 20;
constexpr std::uint64_t kMostPixels = 24'000'000, kMostMemory = std::uint64_t{1} << 30;
constexpr std::chrono::seconds kLongest(10);

// What a failure is in this protocol.
int http_status(tarvo_status status) {
    switch (status) {
        case TARVO_OK: return 200;
        case TARVO_USE: return 400;
        case TARVO_LIMIT: return 413;
        case TARVO_FILE: return 415;
        case TARVO_OPERATION: return 422;
        case TARVO_MEMORY:
        case TARVO_CANCELLED: return 503;
    }
    return 500;
}

std::string answer(const std::string& file, const std::string& call) {
    const auto end = std::chrono::steady_clock::now() + kLongest;
    const auto too_long = [end] { return std::chrono::steady_clock::now() > end; };
    tarvo::ReadOptions reading;
    reading.max_pixels = kMostPixels;
    reading.max_memory = kMostMemory;
    reading.yield = too_long;
    tarvo::CallOptions calling;
    calling.max_pixels = kMostPixels;
    calling.max_memory = kMostMemory;
    calling.yield = too_long;
    tarvo::WriteOptions writing;
    writing.yield = too_long;

    const auto picture = tarvo::Picture::decode(file.data(), file.size(), reading);
    const auto png = tarvo::apply(call, picture, calling).picture().encode("png", writing);
    return std::string(png.begin(), png.end());
}

}  // namespace

int main(int argc, char** argv) {
    httplib::Server server;
    server.new_task_queue = [] { return new httplib::ThreadPool(8); };
    server.set_payload_max_length(kMostBytes);
    server.Post("/apply", [](const httplib::Request& request, httplib::Response& response) {
        try {
            response.set_content(answer(request.body, request.get_param_value("call")), "image/png");
        } catch (const tarvo::Error& error) {
            response.status = http_status(error.status());
            response.set_content(std::string(error.what()) + "\n", "text/plain; charset=utf-8");
        }
    });

    int port = argc > 1 ? std::atoi(argv[1]) : 0;
    if (port == 0)
        port = server.bind_to_any_port("127.0.0.1");
    else if (!server.bind_to_port("127.0.0.1", port))
        port = -1;
    if (port <= 0) {
        std::fprintf(stderr, "server: the port cannot be had\n");
        return 1;
    }
    std::printf("%d\n", port);
    std::fflush(stdout);
    return server.listen_after_bind() ? 0 : 1;
}
