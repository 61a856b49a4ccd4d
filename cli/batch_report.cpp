#include "batch_report.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>

#include "command_line.h"
#include "shown_text.h"

namespace tarvo::cli {
namespace {

constexpr const char* kStatuses[] = {"done", "skipped", "failed"};

std::string duration(double seconds) {
    const auto whole = static_cast<long>(seconds + 0.5);
    if (whole < 60) return std::to_string(whole) + " s";
    if (whole < 3600) return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
    return std::to_string(whole / 3600) + " h " + std::to_string(whole / 60 % 60) + " min";
}

std::string as_line(const nlohmann::ordered_json& json) {
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

std::string as_json(const PlannedFile& file, FileStatus status, const FileRecord& record) {
    nlohmann::ordered_json line = {{"input", file.input},
                                   {"output", nullptr},
                                   {"status", kStatuses[static_cast<std::size_t>(status)]},
                                   {"code", record.code},
                                   {"message", record.message},
                                   {"width", record.width},
                                   {"height", record.height},
                                   {"losses", nlohmann::ordered_json::array()},
                                   {"milliseconds", record.milliseconds},
                                   {"sha256", nullptr}};
    if (!file.output.empty()) line["output"] = file.output;
    if (!record.sha256.empty()) line["sha256"] = record.sha256;
    for (const Loss& loss : record.losses) line["losses"].push_back(loss.text);
    return as_line(line);
}

}  // namespace

void FileTelling::note(tarvo_note kind, const std::string& line) {
    const bool always = kind == TARVO_NOTE_COMPLAINT || kind == TARVO_NOTE_MESSAGE || TARVO_IS_LOSS(kind);
    if (quiet_ && !always) return;
    lines_.push_back({false, (kind == TARVO_NOTE_COMPLAINT ? "warning: " : "note: ") + line});
}

BatchReport::BatchReport(const std::vector<PlannedFile>& files, bool json, bool quiet)
    : files_(files), json_(json), quiet_(quiet), terminal_(!quiet && ::isatty(STDERR_FILENO) == 1) {}

BatchReport::Texts BatchReport::texts(std::size_t index, FileStatus status, const FileRecord& record,
                                      const FileTelling& telling) const {
    const PlannedFile& file = files_[index];
    Texts all;
    for (const FileTelling::Line& line : telling.lines())
        if (!line.answer)
            all.err += readable(file.input + ": " + line.text) + '\n';
        else if (!json_)
            all.out += readable(file.input + ": " + line.text) + '\n';
    if (json_) {
        all.out += as_json(file, status, record);
    } else if (status == FileStatus::failed) {
        const bool named = record.message.starts_with(file.input);
        all.err += "tarvo: " + readable((named ? "" : file.input + ": ") + record.message) + '\n';
    } else if (!quiet_) {
        const std::string to = file.output.empty() ? "" : " -> " + file.output;
        const std::string why = record.message.empty() ? "" : ": " + record.message;
        all.out += host::shown_lines(file.input + to + ": " + kStatuses[static_cast<std::size_t>(status)] + why) + '\n';
    }
    return all;
}

void BatchReport::file(std::size_t index, FileStatus status, const FileRecord& record, const FileTelling& telling) {
    Texts told = texts(index, status, record, telling);
    const std::lock_guard lock(mutex_);
    ++counts_[static_cast<std::size_t>(status)];
    waiting_.emplace(index, std::move(told));
    for (auto first = waiting_.begin(); first != waiting_.end() && first->first == next_; ++next_) {
        if (!first->second.err.empty() || !first->second.out.empty()) clear_progress();
        std::cout << first->second.out << std::flush;
        std::cerr << first->second.err;
        first = waiting_.erase(first);
    }
    show_progress();
}

void BatchReport::show_progress() {
    const auto now = std::chrono::steady_clock::now();
    if (!terminal_ || now - shown_ < std::chrono::milliseconds(100)) return;
    shown_ = now;
    const std::size_t through = counts_[0] + counts_[1] + counts_[2];
    const double seconds = std::chrono::duration<double>(now - begin_).count();
    const double rate = static_cast<double>(through) / seconds;
    char text[64];
    std::snprintf(text, sizeof text, ", %.1f a second, ", rate);
    std::cerr << "\r\033[K" << through << " of " << files_.size() << text
              << duration(static_cast<double>(files_.size() - through) / rate) << " left" << std::flush;
}

void BatchReport::clear_progress() {
    if (terminal_) std::cerr << "\r\033[K" << std::flush;
}

void BatchReport::finish() {
    clear_progress();
    const auto number = [this](FileStatus status) { return counts_[static_cast<std::size_t>(status)]; };
    if (json_) {
        std::cout << as_line({{"summary",
                               {{"done", number(FileStatus::done)},
                                {"skipped", number(FileStatus::skipped)},
                                {"failed", number(FileStatus::failed)}}}});
    } else if (!quiet_ || number(FileStatus::failed) > 0) {
        std::cout << number(FileStatus::done) << " done, " << number(FileStatus::skipped) << " skipped, "
                  << number(FileStatus::failed) << " failed\n";
    }
}

}  // namespace tarvo::cli
