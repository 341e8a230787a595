#pragma once
// The lines the file-information lists of the VT, VU, VQ and KL families share, from
// "File damaged!" to "Group Name: ", with the lines only some families have. Each line is a
// statement of its own, so that an error 49 in one resumes at the next (info_statements.h).
//
//   InfoRows rows;
//   std::vector<std::function<void()>> s = {[&] { list.lines.clear(); },
//                                           [&] { VTGetInfo(ctx, path, info);
//                                                 rows = info_rows(info); }};
//   add_common_info_lines(s, list, rows);
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "recorder/vt_reader.h"

namespace qumbrel {

struct InfoRows {
    std::int32_t status = 0;
    std::string fileType, deviceType, serialNo, fileMessage, startTime, endTime, samplingInt;
    std::string timeCorrect, triggerDateTime, startUser, stopUser, startedBy, stoppedBy;
    std::string startingCond, dividingCond, groupName;
    std::int32_t measChCount = 0, mathChCount = 0, dataCount = 0, alarmNum = 0, eventNum = 0;
    std::int32_t triggerNo = 0, userFlag = 0;
    std::int32_t extChannels = 0;  // "Ext. Cahnnel: " when above 0
    // Lines of some families only.
    std::optional<std::int32_t> extChCount, ctrlChCount, opeLogNum, ctrlNum, pvEventNum;
};

template <class Info>
InfoRows info_rows(const Info& i) {
    InfoRows r;
    r.status = i.status;
    r.fileType = i.fileType;
    r.deviceType = i.deviceType;
    r.serialNo = i.serialNo;
    r.fileMessage = i.fileMessage;
    r.startTime = i.startTime;
    r.endTime = i.endTime;
    r.samplingInt = i.samplingInt;
    r.timeCorrect = i.timeCorrect;
    r.triggerDateTime = i.triggerDateTime;
    r.startUser = i.startUser;
    r.stopUser = i.stopUser;
    r.startedBy = i.startedBy;
    r.stoppedBy = i.stoppedBy;
    r.startingCond = i.startingCond;
    r.dividingCond = i.dividingCond;
    r.groupName = i.groupName;
    r.measChCount = i.measChCount;
    r.mathChCount = i.mathChCount;
    r.dataCount = i.dataCount;
    r.alarmNum = i.alarmNum;
    r.eventNum = i.eventNum;
    r.triggerNo = i.triggerNo;
    r.userFlag = i.userFlag;
    r.extChannels = i.extChCount;
    return r;
}

// Appends the statements of the shared lines; `rows` is read when they run.
void add_common_info_lines(std::vector<std::function<void()>>& statements, FileInfoList& list,
                           const InfoRows& rows);

}  // namespace qumbrel
