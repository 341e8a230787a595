// fkt_ReadVUFileInfo: the file information list of the run page for a VU file.
#include <functional>
#include <string>

#include "recorder/damage.h"
#include "recorder/info_statements.h"
#include "recorder/vu_reader.h"

namespace qumbrel {

void fkt_ReadVUFileInfo(Program& ctx, FileInfoList& list, const std::string& path) {
    VUInfo info;
    VUBatchInfo batch;
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
            VUGetInfo(ctx, 0, path, info);
            VUGetBatchInfo(ctx, 0, path, batch);
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
            if (batch.batchFlag <= 0) return;
            lines.emplace_back();
            line("Application : ", batch.application);
            line("Batch Name: ", batch.batchName);
            lines.push_back("Batch No: \t\t" + std::to_string(batch.batchNo));
            for (int k = 0; k < kVuBatchCommentCount; ++k)
                line("Comment " + std::to_string(k + 1) + ": ",
                     batch.comment[static_cast<std::size_t>(k)]);
            for (int k = 0; k < kVuBatchTexts; ++k) {
                const auto i = static_cast<std::size_t>(k);
                line("Text " + std::to_string(k + 1) + ": ",
                     vu_batch_text(batch.label[i], batch.text[i]));
            }
            lines.emplace_back();
        },
    };
    run_info_statements(ctx, "fkt_ReadVUFileInfo()", statements);
}

}  // namespace qumbrel
