// fkt_ReadKLFileInfo: the file information list of the run page for a KL file.
#include <functional>
#include <string>

#include "recorder/damage.h"
#include "recorder/info_statements.h"
#include "recorder/kl_reader.h"

namespace qumbrel {

void fkt_ReadKLFileInfo(Program& ctx, FileInfoList& list, const std::string& path) {
    KLInfo info;
    KLBatchInfo batch;
    auto& lines = list.lines;
    auto line = [&lines](std::string_view label, std::string_view value) {
        lines.push_back(std::string(label) + "\t" + std::string(value));
    };
    auto number = [&line](std::string_view label, std::int32_t value) {
        line(label, std::to_string(value));
    };

    const std::function<void()> statements[] = {
        [&] { lines.clear(); },
        [&] {
            KLGetInfo(ctx, 0, path, info);
            KLGetBatchInfo(ctx, 0, path, batch);
        },
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
        [&] { number("Ext. Ch. Count: ", info.extChCount); },
        [&] { number("Ctrl. Ch. Count: ", info.ctrlChCount); },
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
        [&] { number("Ctrl. Num.: ", info.ctrlNum); },
        [&] { number("PV Event Num.: ", info.pvEventNum); },
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
            if (batch.batchFlag <= 0) return;
            lines.emplace_back();
            line("Batch Name: ", batch.batchName);
            lines.push_back("Batch No: \t\t" + std::to_string(batch.batchNo));
            line("Level 1: ", batch.level1);
            line("Level 2: ", batch.level2);
            line("Level 3: ", batch.level3);
            // Spelled so; the KL library keeps no batch comments.
            line("Commments: ", "");
            lines.emplace_back();
        },
    };
    run_info_statements(ctx, "fkt_ReadKLFileInfo()", statements);
}

}  // namespace qumbrel
