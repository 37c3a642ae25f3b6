#include "readers/mqf_reader.h"

#include <array>

#include "text/line_reader.h"
#include "text/scan.h"

namespace mqf2vxb {
namespace {

struct FileKey {
    std::string_view key;
    ComponentFile ModelDescription::*file;
};

constexpr std::array<FileKey, 6> fileKeys{{{"GEO=", &ModelDescription::geo},
                                           {"SRF=", &ModelDescription::srf},
                                           {"SQD=", &ModelDescription::sqd},
                                           {"AXS=", &ModelDescription::axs},
                                           {"FRM=", &ModelDescription::frm},
                                           {"BND=", &ModelDescription::bnd}}};

/// Reads a count line and the block of lines behind it that name the slots of `table`. A slot that the
/// table does not have is reported with this message, or with the table's own report.
template <class Record>
void readSlots(LineReader& reader, std::string_view countKey, std::string_view slotKey,
               std::string_view indexMessage, Table<Record>& table) {
    constexpr std::size_t shortestSlotLine = 8;
    std::int32_t count = 0;
    scanLine(reader, Literal{countKey}, count);
    reader.checkCount(count, shortestSlotLine, std::string(slotKey.substr(0, 3)) + " lines");
    table.allocate(static_cast<std::size_t>(count));
    for (std::int32_t i = 0; i < count; ++i) {
        reader.requireLine("its " + std::string(slotKey) + "..] lines");
        std::int32_t slot = 0;
        std::string name;
        if (!scanLine(reader, Literal{slotKey}, slot, Literal{"]="}, Word{name})) {
            reader.refuseLine("not of the form " + std::string(slotKey) + "number]=name");
        }
        try {
            if (!indexMessage.empty()) {
                checkIndex(reader.fileName(), slot, count, indexMessage);
            }
            table.checkArea(slot);
        } catch (Report& report) {
            report.explain({"the lines " + std::string(slotKey) + "..] count from 0 to " +
                                std::to_string(count - 1),
                            reader.place()});
            throw;
        }
        Record& record = table[static_cast<std::size_t>(slot)];
        record.name = name;
        record.named = true;
    }
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (!table[i].named) {
            reader.refuseFile("no line names " + std::string(slotKey) + std::to_string(i) + "]");
        }
    }
}

}  // namespace

void readModelDescription(Inputs& inputs, const std::string& fileName,
                          ModelDescription& description, Table<ImageRecord>& images,
                          Table<MotionRecord>& motions) {
    description.fileName = fileName;
    LineReader reader(inputs, fileName, "@MQF970401");
    while (reader.readLine()) {
        for (const FileKey& entry : fileKeys) {
            if (reader.line().starts_with(entry.key)) {
                ComponentFile& file = description.*entry.file;
                scanLine(reader, Literal{entry.key}, Word{file.fileName});
                file.given = true;
            }
        }
        if (reader.line().starts_with("NTEX=")) {
            readSlots(reader, "NTEX=", "TEX[", "PXL file's index is incorrect!", images);
        } else if (reader.line().starts_with("NCLP=")) {
            readSlots(reader, "NCLP=", "CLP[", "", motions);
        }
    }
}

}  // namespace mqf2vxb
