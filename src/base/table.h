#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "base/diagnostics.h"

namespace mqf2vxb {

/// A table of the model: records counted from 0, and the name that reports give the table. Missing
/// memory and indices outside the table are reported here and nowhere else.
template <class Record>
class Table {
public:
    explicit Table(std::string_view name, std::string_view operation = {})
        : label_{name, operation} {}

    /// Makes the table anew with `count` records, all fields zero.
    void allocate(std::size_t count) {
        guarded(count, false, [&] { records_ = std::vector<Record>(count); });
    }

    /// Adds a record at the end.
    Record& append(Record record) {
        guarded(records_.size() + 1, !records_.empty(),
                [&] { records_.push_back(std::move(record)); });
        return records_.back();
    }

    /// Adds `count` records, all fields zero, at the end, and returns the first of them.
    Record* extend(std::size_t count) {
        const std::size_t first = records_.size();
        guarded(first + count, first > 0, [&] { records_.resize(first + count); });
        return records_.data() + first;
    }

    /// Removes all records but the first `count`.
    void shrink(std::size_t count) { records_.resize(count); }

    /// Adds all these records at the end.
    void appendAll(std::span<const Record> records) {
        guarded(records_.size() + records.size(), !records_.empty(),
                [&] { records_.insert(records_.end(), records.begin(), records.end()); });
    }

    /// Removes all records and keeps their room.
    void clear() { records_.clear(); }

    /// Makes room for `count` records in all without adding any.
    void reserve(std::size_t count) {
        guarded(count, !records_.empty(), [&] { records_.reserve(count); });
    }

    /// The record at an index that comes from the input; one outside the table is reported.
    [[nodiscard]] Record& at(std::int64_t index) {
        checkArea(index);
        return records_[static_cast<std::size_t>(index)];
    }
    [[nodiscard]] const Record& at(std::int64_t index) const {
        checkArea(index);
        return records_[static_cast<std::size_t>(index)];
    }
    void checkArea(std::int64_t index) const {
        if (index < 0 || static_cast<std::size_t>(index) >= records_.size()) [[unlikely]] {
            areaMissing({records_.data(), sizeof(Record), records_.size(), label_.name}, index);
        }
    }

    /// The record at an index that the program made itself.
    [[nodiscard]] Record& operator[](std::size_t index) { return records_[index]; }
    [[nodiscard]] const Record& operator[](std::size_t index) const { return records_[index]; }

    [[nodiscard]] std::span<const Record> records() const { return records_; }
    [[nodiscard]] std::size_t size() const { return records_.size(); }
    [[nodiscard]] bool empty() const { return records_.empty(); }
    [[nodiscard]] auto begin() { return records_.begin(); }
    [[nodiscard]] auto end() { return records_.end(); }
    [[nodiscard]] auto begin() const { return records_.begin(); }
    [[nodiscard]] auto end() const { return records_.end(); }

private:
    template <class Growth>
    void guarded(std::size_t count, bool grown, Growth growth) {
        try {
            growth();
        } catch (const std::bad_alloc&) {
            tableAllocationFailed(label_, sizeof(Record), count, grown);
        } catch (const std::length_error&) {
            tableAllocationFailed(label_, sizeof(Record), count, grown);
        }
    }

    TableLabel label_;
    std::vector<Record> records_;
};

}  // namespace mqf2vxb
