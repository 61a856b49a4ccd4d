#pragma once

// Threads that help with one call.

#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "bands.h"

namespace tarvo::library {

// They start with the first bands that there are, wait for others while the call lasts, and end with it. The calling
// thread works too, alone where the system gives no others.
class Helpers final : public plugin::BandRunner {
public:
    // 0 threads: as many as there are processors.
    explicit Helpers(std::int32_t threads);
    ~Helpers() override;
    Helpers(const Helpers&) = delete;
    Helpers& operator=(const Helpers&) = delete;

    int threads() const override { return threads_; }
    void run(int count, const std::function<void(int)>& band) override;

private:
    void start();
    void help();
    void work(std::unique_lock<std::mutex>& lock);

    const int threads_;
    std::vector<std::thread> helpers_;
    std::mutex mutex_;  // of all that follows
    std::condition_variable bands_come_, bands_end_;
    const std::function<void(int)>* band_ = nullptr;
    int next_ = 0, count_ = 0, running_ = 0;
    std::exception_ptr thrown_;
    bool ending_ = false;
};

}  // namespace tarvo::library
