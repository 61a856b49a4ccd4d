#include "report.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>

#include "command_error.h"
#include "whole_file.h"

namespace tarvo::cli {
namespace {

// The page brings all that it needs: it can be sent, and kept.
constexpr std::string_view kHead = R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Pictures that changed</title>
<style>
body { font: 16px/1.5 sans-serif; margin: 2em; color: #222; background: #fff }
h2 { margin: 2em 0 0; overflow-wrap: anywhere }
table { border-collapse: collapse }
td, th { padding: 0 1.5em 0 0; text-align: left; font-variant-numeric: tabular-nums }
.pictures { display: flex; flex-wrap: wrap; gap: 1em; margin: 1em 0 }
figure { margin: 0; max-width: 100% }
img { display: block; max-width: 100%; image-rendering: pixelated; border: 1px solid #888;
      background: repeating-conic-gradient(#ddd 0 25%, #fff 0 50%) 0 0 / 16px 16px }
.swatch { display: inline-block; width: 1em; height: 1em; border: 1px solid #888; vertical-align: -0.15em }
@media (prefers-color-scheme: dark) { body { color: #ddd; background: #181818 } }
</style>
</head>
<body>
<h1>Pictures that changed</h1>
)";

std::string escaped_html(std::string_view text) {
    std::string safe;
    for (const char c : text) switch (c) {
            case '&': safe += "&amp;"; break;
            case '<': safe += "&lt;"; break;
            case '>': safe += "&gt;"; break;
            case '"': safe += "&quot;"; break;
            default: safe += c;
        }
    return safe;
}

std::string base64(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < 3; ++k) group = group << 8 | (k < count ? bytes[i + k] : 0u);
        for (std::size_t k = 0; k < 4; ++k) text += k <= count ? kDigits[group >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

std::string figure(const Picture& picture, const std::string& caption) {
    return "<figure><img width=\"" + std::to_string(picture.width()) + "\" height=\"" +
           std::to_string(picture.height()) + "\" alt=\"" + escaped_html(caption) + "\" src=\"data:image/png;base64," +
           base64(picture.encode("png")) + "\"><figcaption>" + escaped_html(caption) + "</figcaption></figure>\n";
}

std::string row(const std::string& what, const std::string& value) {
    return "<tr><th>" + what + "</th><td>" + value + "</td></tr>\n";
}

std::string pixel(const Rgba8& color) {
    const auto number = [](std::uint8_t channel) { return std::to_string(channel); };
    const std::string rgb = number(color[0]) + ", " + number(color[1]) + ", " + number(color[2]);
    return "<span class=\"swatch\" style=\"background: rgb(" + rgb + ")\"></span> " + rgb + ", " + number(color[3]);
}

std::string table(const Difference& difference) {
    const auto& largest = difference.largest;
    return "<table>\n" + row("pixels that differ", std::to_string(difference.pixels)) +
           row("largest difference", "red " + std::to_string(largest[0]) + ", green " + std::to_string(largest[1]) +
                                         ", blue " + std::to_string(largest[2]) + ", alpha " +
                                         std::to_string(largest[3])) +
           row("all within", "columns " + std::to_string(difference.left) + " to " + std::to_string(difference.right) +
                                 ", rows " + std::to_string(difference.top) + " to " +
                                 std::to_string(difference.bottom)) +
           row("first pixel", "(" + std::to_string(difference.x) + ", " + std::to_string(difference.y) + ")") +
           row("expected there", pixel(difference.expected)) + row("found there", pixel(difference.found)) +
           "</table>\n";
}

// None where there is nothing to read, or no longer.
template <class Read>
Picture picture_of(const std::optional<PictureEntry>& entry, Read read) {
    try {
        return entry ? read(*entry) : Picture();
    } catch (const CommandError&) {
        return {};
    }
}

bool are_of_one_size(const Picture& a, const Picture& b) {
    return a && b && a.width() == b.width() && a.height() == b.height();
}

// Files may be others by now than when they were compared.
std::string pictures_of(const Finding& finding, const VerifiedPictures& pictures) {
    const Picture expected = picture_of(finding.expected, [&](const PictureEntry& listed) {
        return pictures.expected(finding.name, finding.recipe(), listed);
    });
    const Picture found =
        picture_of(finding.found, [&](const PictureEntry&) { return pictures.found(finding.name, *finding.group); });
    std::string html = "<div class=\"pictures\">\n";
    if (expected) html += figure(expected, "expected");
    if (found) html += figure(found, "found");
    if (finding.difference && are_of_one_size(expected, found)) {
        const int largest = finding.difference->largest_of_all();
        html += figure(amplified(Pixels(expected), Pixels(found), largest),
                       "the difference, " + std::to_string(255 / std::max(largest, 1)) + " times as large");
    }
    return html + "</div>\n";
}

bool is_shown(const Finding& finding) { return finding.outcome != Outcome::same; }

// By how much there is to see: what is not there at all, then the largest difference.
bool comes_first(const Finding* a, const Finding* b) {
    const auto weight = [](const Finding& finding) {
        return finding.difference ? finding.difference->largest_of_all() : 256;
    };
    return weight(*a) != weight(*b) ? weight(*a) > weight(*b)
                                    : std::tie(a->name, a->recipe()) < std::tie(b->name, b->recipe());
}

}  // namespace

void write_report(const std::string& path, const std::vector<Finding>& findings, const VerifiedPictures& pictures,
                  Listener& listener) {
    std::vector<const Finding*> shown;
    for (const Finding& finding : findings)
        if (is_shown(finding)) shown.push_back(&finding);
    std::sort(shown.begin(), shown.end(), comes_first);

    WholeFile file(path, WholeFile::Old::replaced);
    file.write(kHead);
    file.write("<p>" + escaped_html(summary(findings)) + "</p>\n");
    for (const Finding* finding : shown) {
        file.write("<h2>" + escaped_html(title(finding->name, finding->recipe())) + "</h2>\n<p>" +
                   in_words(finding->outcome) + (finding->remark.empty() ? "" : ": " + escaped_html(finding->remark)) +
                   "</p>\n");
        if (finding->difference) file.write(table(*finding->difference));
        file.write(pictures_of(*finding, pictures));
    }
    file.write("</body>\n</html>\n");
    file.commit(listener);
}

}  // namespace tarvo::cli
