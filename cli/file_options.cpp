#include "file_options.h"

#include <CLI/Option.hpp>
#include <CLI/Validators.hpp>

#include <map>
#include <vector>

namespace tarvo::cli {

namespace {

const std::map<std::string, LossRule> kLossRules = {
    {"warn", LossRule::warn}, {"error", LossRule::error}, {"ignore", LossRule::ignore}};

const std::map<std::string, tarvo_compression> kCompressions = {
    {"fast", TARVO_COMPRESSION_FAST}, {"normal", TARVO_COMPRESSION_NORMAL}, {"small", TARVO_COMPRESSION_SMALL}};

const std::map<std::string, tarvo_metadata> kKinds = {{"exif", TARVO_METADATA_EXIF},
                                                      {"xmp", TARVO_METADATA_XMP},
                                                      {"iptc", TARVO_METADATA_IPTC},
                                                      {"icc", TARVO_METADATA_ICC}};

// Returns what a file loses that keeps these kinds alone; nothing can name the resolution, which it keeps.
std::uint32_t all_but(const std::vector<std::string>& kinds) {
    std::uint32_t strip = TARVO_METADATA_ALL & ~std::uint32_t{TARVO_METADATA_RESOLUTION};
    for (const std::string& kind : kinds) strip &= ~static_cast<std::uint32_t>(kKinds.at(kind));
    return strip;
}

// Takes one of the table's words.
template <class Table>
CLI::Validator one_of(const Table& table) {
    return CLI::IsMember(&table).description("");
}

}  // namespace

void add_file_options(CLI::App& command, FileOptions& options) {
    CLI::Option* const keep =
        command
            .add_option_function<std::vector<std::string>>(
                "--keep", [&options](const std::vector<std::string>& kinds) { options.strip = all_but(kinds); },
                "of what the file carries, keep only these: exif, xmp, iptc, icc, with commas between; all unless told")
            ->type_name("KINDS")
            ->delimiter(',')
            ->allow_extra_args(false)  // one word, so that a file may follow
            ->check(one_of(kKinds));
    command
        .add_flag_callback(
            "--strip", [&options] { options.strip = TARVO_METADATA_ALL; },
            "keep nothing of what the file carries: no Exif, XMP, IPTC, colour profile, resolution")
        ->excludes(keep);
    command
        .add_option(
            "--quality", options.quality,
            "of a JPEG or WebP file, 1 to 100; unless told, for JPEG that of the JPEG file it is made of, or 92, "
            "and for WebP nothing is lost")
        ->type_name("N")
        ->check(CLI::Range(1, 100).description(""));
    command
        .add_option_function<std::string>(
            "--compression", [&options](const std::string& word) { options.compression = kCompressions.at(word); },
            "of a PNG, TIFF or WebP file: fast, normal, small; normal unless told")
        ->type_name("WORD")
        ->check(one_of(kCompressions));
    command.add_flag("--srgb", options.srgb, "make colours those of sRGB, by the file's colour profile");
    command
        .add_option_function<std::string>(
            "--losses", [&options](const std::string& rule) { options.losses = kLossRules.at(rule); },
            "what is lost: warn (a note for each), error (nothing is written), ignore; warn unless told")
        ->type_name("RULE")
        ->check(one_of(kLossRules));
    command.add_option("--format", options.format, "the format of standard output (-o -): png, jpg and so on")
        ->type_name("F");
    add_limit_options(command, options.limits);
}

}  // namespace tarvo::cli
