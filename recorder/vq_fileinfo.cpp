// fkt_ReadVQFileInfo: the file information list of the run page for a VQ file.
#include <array>
#include <functional>
#include <string>

#include "recorder/damage.h"
#include "recorder/info_statements.h"
#include "recorder/vq_reader.h"

namespace qumbrel {

void fkt_ReadVQFileInfo(Program& ctx, FileInfoList& list, const std::string& path) {
    VQInfo info;
    VQBatchInfo batch;
    std::array<VQSignInfo, kVqSignatures> signs;
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
            VQGetInfo(ctx, 0, path, info);
            VQGetBatchInfo(ctx, 0, path, batch);
            for (std::int32_t s = 0; s < kVqSignatures; ++s)
                VQGetSignData(ctx, 0, path, s, signs[static_cast<std::size_t>(s)]);
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
        [&] { number("Data Count: ", info.dataCount); },
        [&] { line("Start Time: ", info.startTime); },
        [&] { line("End Time: ", info.endTime); },
        [&] {
            // Spelled so, and without a tab.
            if (info.extChCount > 0)
                lines.push_back("Ext. Cahnnel: " + std::to_string(info.extChCount));
        },
        [&] { number("Ope.Log Num: ", info.opeLogNum); },
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
            for (std::size_t s = 0; s < signs.size(); ++s) {
                const std::string n = "Sign. " + std::to_string(s + 1);
                const VQSignInfo& g = signs[s];
                line(n + " Name: ", g.name);
                line(n + " Comment: ", g.comment);
                line(n + " Date: ", g.date + " " + g.time);
                line(n + " HW: ", g.host);
                line(n + " Sts.: ", g.statusText);
            }
        },
        [&] {
            for (std::size_t k = 0; k < batch.header.size(); ++k)
                line("Header " + std::to_string(k + 1) + ": ", batch.header[k]);
            line("Batch Name: ", batch.batchName);
            number("Batch No: ", batch.batchNo);
            for (std::size_t k = 0; k < batch.comment.size(); ++k)
                line("Comment " + std::to_string(k + 1) + ": ", batch.comment[k]);
        },
    };
    run_info_statements(ctx, "fkt_ReadVQFileInfo()", statements);
}

}  // namespace qumbrel
