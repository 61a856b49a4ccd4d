#pragma once

// What a batch prints.

#include <chrono>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "batch_plan.h"
#include "file_work.h"
#include "listener.h"

namespace tarvo::cli {

enum class FileStatus : std::uint8_t { done, skipped, failed };

// What there is to tell of one file, until it is that file's turn.
class FileTelling final : public Listener {
public:
    struct Line {
        bool answer;  // on standard output
        std::string text;
    };

    explicit FileTelling(bool quiet) : quiet_(quiet) {}

    void say(const std::string&) override {}
    void answer(const std::string& line) override { lines_.push_back({true, line}); }
    void warn(const std::string& line) override { lines_.push_back({false, "warning: " + line}); }
    void note(tarvo_note kind, const std::string& line) override;

    const std::vector<Line>& lines() const { return lines_; }

private:
    const bool quiet_;
    std::vector<Line> lines_;
};

// Is told of files in any order, by any thread, and prints them in theirs. On a terminal the last line tells how far
// the batch is, and when it will be through.
class BatchReport {
public:
    BatchReport(const std::vector<PlannedFile>& files, bool json, bool quiet);

    void file(std::size_t index, FileStatus status, const FileRecord& record, const FileTelling& telling);
    // Prints how many files came to what end.
    void finish();
    std::size_t failed() const { return counts_[static_cast<std::size_t>(FileStatus::failed)]; }

private:
    struct Texts {
        std::string out, err;
    };

    Texts texts(std::size_t index, FileStatus status, const FileRecord& record, const FileTelling& telling) const;
    void show_progress();
    void clear_progress();

    const std::vector<PlannedFile>& files_;
    const bool json_, quiet_, terminal_;
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::mutex mutex_;
    std::map<std::size_t, Texts> waiting_;
    std::size_t next_ = 0;
    std::size_t counts_[3] = {};
    std::chrono::steady_clock::time_point shown_ = {};
};

}  // namespace tarvo::cli
