// fkt_ReadHNFileInfo: the file information list of the run page for an HN file.
#include <functional>
#include <string>

#include "recorder/damage.h"
#include "recorder/hn_reader.h"
#include "recorder/info_statements.h"

namespace qumbrel {

void fkt_ReadHNFileInfo(Program& ctx, FileInfoList& list, const std::string& path) {
    HNInfo info;
    auto& lines = list.lines;
    auto line = [&lines](std::string_view label, std::string_view value) {
        lines.push_back(std::string(label) + "\t" + std::string(value));
    };
    auto number = [&line](std::string_view label, std::int32_t value) {
        line(label, std::to_string(value));
    };

    const std::function<void()> statements[] = {
        [&] { lines.clear(); },
        [&] { HNGetInfo(ctx, 0, path, info); },
        [&] {
            if (file_damaged(info.status)) {
                lines.emplace_back(kDamagedInfoLine);
                list.backColor = kInfoColorDamaged;
            } else {
                list.backColor = kInfoColorNormal;
            }
        },
        [&] { line("File Type: ", info.fileType); },
        [&] { line("Device Type: ", info.deviceType); },
        [&] { line("Serial No: ", info.serialNo); },
        [&] { line("File Message: ", info.fileMessage); },
        [&] { line("Post: ", info.post); },
        [&] { line("File Status: ", info.fileState); },
        [&] { number("Meas. Ch. Count: ", info.measChCount); },
        [&] { line("Sampling Int.: ", info.samplingInt); },
        [&] { number("Data Count: ", info.dataCount); },
        [&] { number("Unit Num.: ", info.unitNum); },
        [&] { line("Start Time: ", info.startTime); },
        [&] { line("End Time: ", info.endTime); },
        [&] { number("Event Num.: ", info.eventNum); },
        [&] { line("Time Correct.: ", info.timeCorrect); },
        [&] { line("Start Reason: ", info.startReason); },
        [&] { line("Stop Reason: ", info.stopReason); },
        [&] { line("Creator:        ", info.creator); },  // spelled with these blanks
        [&] { line("Group Name: ", info.groupName); },
    };
    run_info_statements(ctx, "fkt_ReadHNFileInfo()", statements);
}

}  // namespace qumbrel
