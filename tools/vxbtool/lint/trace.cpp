#include "vxbtool/lint/trace.h"

namespace vxbtool::lint {

void Trace::opened(const std::string& name, std::string_view contents) {
    opened_.insert(name);
    name_ = name;
    contents_ = contents;
    begun_ = false;
}

void Trace::line(std::string_view line) {
    if (!begun_) {
        // Images are opened too, but have no lines.
        files_.push_back({name_, std::string(contents_), {}, {}, {}, false});
        begun_ = true;
    }
    TracedFile& file = files_.back();
    const std::size_t offset = offsetOf(line.data());
    file.lines.push_back({offset, std::string_view(file.text).substr(offset, line.size())});
}

void Trace::scanned(bool complete, std::string_view rest) {
    TracedLine& line = files_.back().lines.back();
    line.scanned = true;
    line.complete = complete;
    line.rest = line.text.substr(line.text.size() - rest.size());
}

void Trace::token(mqf2vxb::TokenKind kind, const char* start, std::string_view text) {
    files_.back().tokens.push_back({offsetOf(start), kind, std::string(text), false, 0, 0, {}});
}

void Trace::number(std::int32_t value, std::string_view rest) {
    TracedToken& token = files_.back().tokens.back();
    if (token.number) {
        token.text.append("-").append(std::to_string(value)).append(rest);
    } else {
        token.value = value;
        token.number = true;
    }
    token.last = value;
    token.rest += rest;
}

void Trace::endPart(bool failed) {
    for (; finished_ < files_.size(); ++finished_) {
        files_[finished_].whole = !failed || finished_ + 1 < files_.size();
    }
}

void Trace::unread(const char* rest) { files_.back().unread = offsetOf(rest); }

}  // namespace vxbtool::lint
