#include "recorder/info_lines.h"

#include "recorder/damage.h"

namespace qumbrel {

void add_common_info_lines(std::vector<std::function<void()>>& statements, FileInfoList& list,
                           const InfoRows& r) {
    auto& lines = list.lines;
    auto line = [&lines](std::string_view label, std::string_view value) {
        lines.push_back(std::string(label) + "\t" + std::string(value));
    };
    auto number = [line](std::string_view label, std::int32_t value) {
        line(label, std::to_string(value));
    };
    auto optional = [number](std::string_view label, const std::optional<std::int32_t>& value) {
        if (value) number(label, *value);
    };
    const std::vector<std::function<void()>> shared = {
        [&list, &r] {
            if (file_damaged(r.status)) {
                list.lines.emplace_back(kDamagedInfoLine);
                list.backColor = kInfoColorDamaged;
            } else {
                list.backColor = kInfoColorNormal;
            }
        },
        [line, &r] { line("File Type: ", r.fileType); },
        [line, &r] { line("Device Type: ", r.deviceType); },
        [line, &r] { line("Serial No: ", r.serialNo); },
        [line, &r] { line("File Message: ", r.fileMessage); },
        [number, &r] { number("Meas. Ch. Count: ", r.measChCount); },
        [number, &r] { number("Math. Ch. Count: ", r.mathChCount); },
        [optional, &r] { optional("Ext. Ch. Count: ", r.extChCount); },
        [optional, &r] { optional("Ctrl. Ch. Count: ", r.ctrlChCount); },
        [number, &r] { number("Data Count: ", r.dataCount); },
        [line, &r] { line("Start Time: ", r.startTime); },
        [line, &r] { line("End Time: ", r.endTime); },
        [&lines, &r] {
            // Spelled so, and without a tab.
            if (r.extChannels > 0)
                lines.push_back("Ext. Cahnnel: " + std::to_string(r.extChannels));
        },
        [optional, &r] { optional("Ope.Log Num: ", r.opeLogNum); },
        [number, &r] { number("Alarm Num.: ", r.alarmNum); },
        [number, &r] { number("Event Num.: ", r.eventNum); },
        [optional, &r] { optional("Ctrl. Num.: ", r.ctrlNum); },
        [optional, &r] { optional("PV Event Num.: ", r.pvEventNum); },
        [line, &r] { line("Sampling Int.: ", r.samplingInt); },
        [line, &r] { line("Time Correct.: ", r.timeCorrect); },
        [line, &r] { line("Trigger Time: ", r.triggerDateTime); },
        [number, &r] { number("Trigger No: ", r.triggerNo); },
        [line, &r] {
            if (r.userFlag > 0) {
                line("Start User: ", r.startUser);
                line("Stop User: ", r.stopUser);
            }
        },
        [line, &r] { line("Started by: ", r.startedBy); },
        [line, &r] { line("Stopped by: ", r.stoppedBy); },
        [line, &r] { line("Starting Cond.: ", r.startingCond); },
        [line, &r] { line("Dividing Cond.: ", r.dividingCond); },
        [line, &r] { line("Group Name: ", r.groupName); },
    };
    statements.insert(statements.end(), shared.begin(), shared.end());
}

}  // namespace qumbrel
