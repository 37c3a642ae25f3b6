#include "vxbtool/lint/trace.h"

namespace vxbtool::lint {

void Trace::opened(const std::string& name, std::string_view contents) {
    opened_.insert(name);
    name_ = name;
    contents_ = contents;
    begun_ = false;
    repeated_ = false;
}

/// Images are opened too, but have no lines.
void Trace::begin() {
    begun_ = true;
    const auto known = latest_.find(name_);
    repeated_ = known != latest_.end() && known->second >= finished_ &&
                files_[known->second].text == contents_;
    if (!repeated_) {
        latest_[name_] = files_.size();
        files_.push_back({name_, std::string(contents_), {}, {}, {}, false});
    }
    readings_.push_back(&files_[latest_[name_]]);
}

void Trace::line(std::string_view line) {
    if (!begun_) {
        begin();
    }
    if (repeated_) {
        return;
    }
    TracedFile& file = files_.back();
    const std::size_t offset = offsetOf(line.data());
    file.lines.push_back({offset, std::string_view(file.text).substr(offset, line.size())});
}

void Trace::scanned(bool complete, std::string_view rest) {
    if (repeated_) {
        return;
    }
    TracedLine& line = files_.back().lines.back();
    line.scanned = true;
    line.complete = complete;
    line.rest = line.text.substr(line.text.size() - rest.size());
}

void Trace::token(mqf2vxb::TokenKind kind, const char* start, std::string_view text) {
    if (repeated_) {
        return;
    }
    files_.back().tokens.push_back({offsetOf(start), kind, std::string(text), false, 0, 0, {}});
}

void Trace::number(std::int32_t value, std::string_view rest) {
    if (repeated_) {
        return;
    }
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
        // A reading that fails where another of the same text did not leaves nothing of it out.
        files_[finished_].whole = !failed || repeated_ || finished_ + 1 < files_.size();
    }
}

void Trace::unread(const char* rest) {
    if (!repeated_) {
        files_.back().unread = offsetOf(rest);
    }
}

}  // namespace vxbtool::lint
