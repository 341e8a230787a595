// fkt_ReadVTFileInfo: the file information list of the run page for a VT file.
#include <functional>
#include <string>

#include "frame/errors.h"
#include "frame/log.h"
#include "recorder/damage.h"
#include "recorder/info_statements.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

void fkt_ReadVTFileInfo(Program& ctx, FileInfoList& list, const std::string& path) {
    VTInfo info;
    auto& lines = list.lines;
    auto line = [&lines](std::string_view label, std::string_view value) {
        lines.push_back(std::string(label) + "\t" + std::string(value));
    };
    auto number = [&line](std::string_view label, std::int32_t value) {
        line(label, std::to_string(value));
    };

    // Each statement of the dump; error 49 resumes at the next one, any other ends it.
    const std::function<void()> statements[] = {
        [&] { lines.clear(); },
        [&] { VTGetInfo(ctx, path, info); },
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
        [&] { number("Meas. Ch. Count: ", info.measChCount); },
        [&] { number("Math. Ch. Count: ", info.mathChCount); },
        [&] { number("Data Count: ", info.dataCount); },
        [&] { line("Start Time: ", info.startTime); },
        [&] { line("End Time: ", info.endTime); },
        [&] {
            // Spelled so, and without a tab.
            if (info.extChCount > 0)
                lines.push_back("Ext. Cahnnel: " + std::to_string(info.extChCount));
        },
        [&] { number("Alarm Num.: ", info.alarmNum); },
        [&] { number("Event Num.: ", info.eventNum); },
        [&] { line("Sampling Int.: ", info.samplingInt); },
        [&] { line("Time Correct.: ", info.timeCorrect); },
        [&] { line("Trigger Time: ", info.triggerDateTime); },
        [&] { number("Trigger No: ", info.triggerNo); },
        [&] {
            if (info.userFlag > 0) {
                line("Start User: ", info.startUser);
                line("Stop User: ", info.stopUser);
            }
        },
        [&] { line("Started by: ", info.startedBy); },
        [&] { line("Stopped by: ", info.stoppedBy); },
        [&] { line("Starting Cond.: ", info.startingCond); },
        [&] { line("Dividing Cond.: ", info.dividingCond); },
        [&] { line("Group Name: ", info.groupName); },
        [&] {
            if (info.batchFlag > 0) {
                lines.emplace_back();
                line("Application : ", info.application);
                line("Supervisor : ", info.supervisor);
                line("Manager : ", info.manager);
                line("Batch Name: ", info.batchName);
                lines.push_back("Batch No: \t\t" + std::to_string(info.batchNo));
                line("Comment User: ", info.commentUser);
                line("Comment Time: ", info.commentTime);
                line("Comment 1: ", info.comment1);
                line("Comment 2: ", info.comment2);
                line("Comment 3: ", info.comment3);
                lines.emplace_back();
            }
        },
    };
    run_info_statements(ctx, "fkt_ReadVTFileInfo()", statements);
}

}  // namespace qumbrel
