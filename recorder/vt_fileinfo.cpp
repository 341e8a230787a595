// fkt_ReadVTFileInfo: the file information list of the run page for a VT file.
#include <functional>
#include <string>
#include <vector>

#include "recorder/info_lines.h"
#include "recorder/info_statements.h"
#include "recorder/vt_reader.h"

namespace qumbrel {

void fkt_ReadVTFileInfo(Program& ctx, FileInfoList& list, const std::string& path) {
    VTInfo info;
    InfoRows rows;
    auto& lines = list.lines;
    auto line = [&lines](std::string_view label, std::string_view value) {
        lines.push_back(std::string(label) + "\t" + std::string(value));
    };
    std::vector<std::function<void()>> statements = {
        [&] { lines.clear(); },
        [&] {
            VTGetInfo(ctx, path, info);
            rows = info_rows(info);
        },
    };
    add_common_info_lines(statements, list, rows);
    statements.push_back([&] {
        if (info.batchFlag <= 0) return;
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
    });
    run_info_statements(ctx, "fkt_ReadVTFileInfo()", statements);
}

}  // namespace qumbrel
