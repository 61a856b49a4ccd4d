#include "batch.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <system_error>
#include <thread>

#include "batch_report.h"
#include "file_work.h"
#include "interrupts.h"
#include "picture_io.h"

namespace tarvo::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostJobs = 256;  // files that are watched at a time

bool is_there(const std::string& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

FileRecord skipped(const char* why) {
    FileRecord record;
    record.message = why;
    return record;
}

class Batch {
public:
    Batch(const std::vector<PlannedFile>& files, const Chain& chain, const BatchOptions& options)
        : files_(files), chain_(chain), options_(options), report_(files, options.json, options.quiet) {}

    ExitStatus run() {
        if (!options_.dry_run) make_ready();
        const InterruptedSoftly interrupts;
        const std::size_t jobs = options_.jobs != 0 ? options_.jobs : std::thread::hardware_concurrency();
        std::vector<std::thread> threads;
        try {
            for (std::size_t i = 1; i < std::min({jobs, files_.size(), kMostJobs}); ++i)
                threads.emplace_back([this] { work(); });
        } catch (const std::system_error&) {  // those that there are will do
        }
        work();
        for (std::thread& thread : threads) thread.join();
        report_.finish();
        if (interrupted()) return ExitStatus::interrupted;
        return report_.failed() > 0 ? ExitStatus::operation_failed : ExitStatus::fine;
    }

private:
    // Before any work: folders that are not there yet, and what would keep a file from being written.
    void make_ready() const {
        for (const PlannedFile& file : files_) {
            if (file.output.empty()) continue;
            const fs::path folder = fs::path(file.output).parent_path();
            std::error_code error;
            if (!folder.empty() && !fs::is_directory(folder, error)) fs::create_directories(folder, error);
            check_output(file.output, options_.file);
        }
    }

    void work() {
        for (std::size_t index; (index = next_++) < files_.size();) {
            FileTelling telling(options_.quiet);
            const FileRecord record = record_of(files_[index], telling);
            const bool failed = record.status != ExitStatus::fine;
            if (failed && !options_.keep_going) stop_ = true;
            report_.file(index,
                         failed                   ? FileStatus::failed
                         : record.message.empty() ? FileStatus::done
                                                  : FileStatus::skipped,
                         record, telling);
        }
    }

    FileRecord record_of(const PlannedFile& file, FileTelling& telling) const {
        if (stop_ || interrupted()) return skipped("not begun");
        if (options_.skip_existing && is_there(file.output)) return skipped("is there already");
        if (options_.dry_run) return skipped("would be done");
        return work_on_file({.input = file.input,
                             .output = file.output,
                             .options = options_.file,
                             .client = options_.client,
                             .hash = options_.hash},
                            chain_, telling);
    }

    const std::vector<PlannedFile>& files_;
    const Chain& chain_;
    const BatchOptions& options_;
    BatchReport report_;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> stop_ = false;
};

}  // namespace

ExitStatus run_batch(const std::vector<PlannedFile>& files, const Chain& chain, const BatchOptions& options) {
    return Batch(files, chain, options).run();
}

}  // namespace tarvo::cli
