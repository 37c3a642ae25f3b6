#include "base/diagnostics.h"

#include <cstdarg>
#include <cstdio>
#include <system_error>
#include <utility>

namespace mqf2vxb {
namespace {

/// The low 32 bits of an address: the reports show eight hexadecimal digits of it.
unsigned addressDigits(std::uintptr_t address) {
    return static_cast<unsigned>(address & 0xFFFFFFFFU);
}

[[noreturn]] void report(const std::string& body, std::string cause, Place place = {}) {
    throw Report("\n" + body, std::move(cause), std::move(place));
}

/// Reports whose text is one line, which is the cause too.
[[noreturn]] void reportLine(const std::string& line, Place place = {}) {
    report(line + "\n", line, std::move(place));
}

/// The form of the reports about a file as a whole.
[[noreturn]] void reportFile(const std::string& message, const std::string& file,
                             const std::string& more, const std::string& cause) {
    report(message + "\n\nFile Name:" + file + "\n" + more, cause, {file});
}

/// ": " and what the system says of this error; nothing of 0.
std::string systemReason(int error) {
    return error == 0 ? "" : ": " + std::generic_category().message(error);
}

/// A report about a line that names a type or a word that nothing matches.
[[noreturn]] void reportMismatch(const std::string& line, Explanation explanation) {
    Report report("\n" + line + "\n", line);
    report.explain(std::move(explanation));
    throw Report(report);
}

/// "vertex" for the "Vertex Data Base".
std::string recordName(std::string_view table) {
    std::string name(table.substr(0, table.find(" Data Base")));
    if (!name.empty() && (name.size() == 1 || name[1] >= 'a')) {
        name[0] = static_cast<char>(name[0] | 0x20);
    }
    return name;
}

}  // namespace

Report::Report(std::string text, std::string cause, Place place)
    : text_(std::move(text)), cause_(std::move(cause)), place_(std::move(place)) {}

void Report::explain(Explanation explanation) {
    if (!explanation.cause.empty()) {
        cause_ = std::move(explanation.cause);
    }
    if (!explanation.place.file.empty()) {
        place_ = std::move(explanation.place);
    }
}

void tableAllocationFailed(const TableLabel& label, std::size_t recordSize, std::size_t count,
                           bool grown) {
    const std::string verb = grown ? "realloc" : "malloc";
    if (!label.operation.empty()) {
        reportLine("Can't " + verb + "(" + std::string(label.operation) + ":" +
                   std::string(label.name) + ")");
    }
    const std::string message = "Can't " + verb + "!";
    report(message + "\n\n-- " + std::string(label.name) + " " + verb + " --\n" +
               formatText("Size   :%zu byte\nNumber :%zu\nAddress:0x%08x\n", recordSize, count, 0U),
           message + " (" + std::string(label.name) + ")");
}

void outOfMemory() { reportLine("Can't malloc!"); }

void areaMissing(const Area& area, std::int64_t index) {
    const auto top = reinterpret_cast<std::uintptr_t>(area.top);
    const auto wanted = top + static_cast<std::uintptr_t>(index) * area.recordSize;
    const std::string table(area.table);
    report("There isn't the area!\n\n-- " + table + " malloc --\n" +
               formatText("Size            :%zu byte\n"
                          "Number          :%zu\n"
                          "Top address     :0x%08x\n"
                          "\n"
                          "Your set address:0x%08x\n",
                          area.recordSize, area.count, addressDigits(top), addressDigits(wanted)),
           formatText("%s %lld is named, and there are %zu", recordName(table).c_str(),
                      static_cast<long long>(index), area.count));
}

void checkIndex(const std::string& file, std::int64_t index, std::int64_t count,
                std::string_view message) {
    if (index < 0 || index >= count) {
        const std::string line(message);
        report(line + "\nFile Name:" + file + "\n", line, {file});
    }
}

void typeMismatch(std::string_view location, std::uint32_t value, Explanation explanation) {
    reportMismatch(formatText("Not match(%.*s:0x%08x)", static_cast<int>(location.size()),
                              location.data(), value),
                   std::move(explanation));
}

void nameMismatch(std::string_view location, std::string_view text, Explanation explanation) {
    reportMismatch("Not match(" + std::string(location) + ":" + std::string(text) + ")",
                   std::move(explanation));
}

void notFormat(const std::string& file, std::string_view format) {
    reportLine(file + " isn't " + std::string(format) + "format", {file});
}

void no24BitImage(const std::string& file) {
    reportLine("You can't use 24bit PXLfiles(" + file + ")", {file});
}

void noGeoFile() { report("There is not GEOfile\n", "no key names a geometry file (GEO=)"); }

void unknownGeoFlag(std::int32_t polygon, std::int32_t kind) {
    reportLine(formatText("Unknown the GEOflag... (No.%4d, flag:%2x)", polygon,
                          static_cast<unsigned>(kind)));
}

void notSuitableTexture() { reportLine("Not suitable texture"); }

void cannotOpen(const std::string& file, Access access, int error) {
    const std::string cause =
        access == Access::read ? "the file cannot be read" : "the file cannot be written";
    reportFile("Can't open this file!", file, "", cause + systemReason(error));
}

void cannotWrite(const std::string& file, int error) {
    reportFile("Can't write this file!", file, "",
               "the file cannot be written to its end" + systemReason(error));
}

void wrongTag(const std::string& file, std::string_view line, const std::string& cause) {
    reportFile("Format isn't correct!", file, "ID       :" + std::string(line), cause);
}

void wrongDate(const std::string& file, std::string_view line, const std::string& cause) {
    reportFile("This program doesn't support the version!", file, "ID       :" + std::string(line),
               cause);
}

void notCorrectData(const Place& place, const std::string& cause, Explanation explanation) {
    std::string text = "Not correct data!\n\nFile Name:" + place.file + "\n";
    if (place.line > 0) {
        text += "Line     :" + std::to_string(place.line) + "\n";
    }
    Report report("\n" + text + "Cause    :" + cause + "\n", cause, place);
    report.explain(std::move(explanation));
    throw Report(report);
}

void layoutFault(std::string_view section, std::uint64_t expected, std::uint64_t written) {
    reportLine(formatText("Layout fault(%.*s:%llu, not %llu)", static_cast<int>(section.size()),
                          section.data(), static_cast<unsigned long long>(written),
                          static_cast<unsigned long long>(expected)));
}

std::string formatText(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list measured;
    va_copy(measured, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    std::string text(static_cast<std::size_t>(size < 0 ? 0 : size), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    va_end(arguments);
    return text;
}

}  // namespace mqf2vxb
