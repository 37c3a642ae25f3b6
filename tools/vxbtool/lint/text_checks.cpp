#include "vxbtool/lint/text_checks.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "text/scan.h"
#include "vxbtool/lint/description_checks.h"

namespace vxbtool::lint {
namespace {

constexpr std::string_view blanks = " \t\r\n\v\f";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos
               ? std::string_view{}
               : text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

/// A comment at the end of a line is skipped like other words there, but its author knows that.
bool isMissed(std::string_view rest) { return !rest.empty() && rest.front() != '#'; }

void checkLine(const TracedFile& file, const TracedLine& line, Findings& findings) {
    const std::string_view rest = trimmed(line.rest);
    const auto at = [&](std::string_view part) {
        return SourcePlace{&file,
                           line.offset + static_cast<std::size_t>(part.data() - line.text.data())};
    };
    if (line.complete && isMissed(rest)) {
        findings.add(kind::leftOver, at(rest), fmt::arg("text", rest));
    } else if (!line.complete && isMissed(rest)) {
        std::string_view words = rest;
        findings.add(kind::unreadable, at(rest), fmt::arg("text", mqf2vxb::scanWord(words)));
    } else if (!line.complete) {
        findings.add(kind::shortLine, at(line.text.substr(line.text.size())));
    }
}

/// A line of a motion file of which only the first word is read: a label or the target.
void checkWordLine(const TracedFile& file, const TracedLine& line, Findings& findings) {
    std::string_view rest = line.text;
    mqf2vxb::scanWord(rest);
    rest = trimmed(rest);
    if (isMissed(rest)) {
        findings.add(kind::leftOver, wordPlace(file, line, 1), fmt::arg("text", rest));
    }
}

void checkToken(const TracedFile& file, const TracedToken& token, Findings& findings) {
    const std::string_view rest = trimmed(token.rest);
    const std::string_view text = trimmed(token.text);
    if (!token.number || (rest.empty() && !text.empty())) {
        return;
    }
    // A number at the end of a line may be followed by words; any other token is one word.
    const bool digits = token.rest.size() < token.text.size();
    if (digits && !rest.empty() && mqf2vxb::isSpace(token.rest.front())) {
        // A comment that took the next line along is no part of the token.
        const std::string_view there = std::string_view(file.text).substr(token.offset);
        const bool asInFile = there.starts_with(token.text.substr(0, token.text.rfind(rest)));
        const std::size_t before = asInFile ? token.text.rfind(rest) : 0;
        findings.add(kind::leftOver, {&file, token.offset + before}, fmt::arg("text", rest));
    } else {
        const std::string value = token.last == token.value ? "" : "-" + std::to_string(token.last);
        findings.add(kind::notANumber, {&file, token.offset}, fmt::arg("text", text),
                     fmt::arg("value", std::to_string(token.value) + value));
    }
}

/// Looks for words behind what the readers took.
void checkRest(const TracedFile& file, std::size_t from, Findings& findings) {
    const std::string_view text = file.text;
    while (from < text.size()) {
        const std::size_t first = text.find_first_not_of(blanks, from);
        if (first == std::string_view::npos) {
            return;
        }
        if (text[first] != '#') {
            findings.add(kind::unreadLines, {&file, first});
            return;
        }
        from = std::min(text.find('\n', first), text.size());
    }
}

void checkLines(const TracedFile& file, std::span<const TracedLine> lines, Findings& findings) {
    const bool motion = file.lines.front().text.starts_with("@CLP");
    for (const TracedLine& line : lines) {
        if (line.scanned) {
            checkLine(file, line, findings);
        } else if (motion) {
            checkWordLine(file, line, findings);
        }
    }
}

}  // namespace

void checkText(const Trace& trace, Findings& findings) {
    for (const TracedFile& file : trace.files()) {
        std::span<const TracedLine> lines = std::span(file.lines).subspan(1);
        if (!file.whole && !lines.empty()) {
            // The reading may have ended while this line was scanned.
            lines = lines.first(lines.size() - 1);
        }
        checkLines(file, lines, findings);
        if (&file == &trace.files().front()) {
            checkDescription(file, lines, findings);
        }
        for (const TracedToken& token : file.tokens) {
            checkToken(file, token, findings);
        }
        if (file.whole) {
            const TracedLine& last = file.lines.back();
            checkRest(file, file.unread.value_or(last.offset + last.text.size()), findings);
        }
    }
}

}  // namespace vxbtool::lint
