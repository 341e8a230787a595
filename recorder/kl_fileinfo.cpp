// fkt_ReadKLFileInfo: the file information list of the run page for a KL file.
#include <functional>
#include <string>
#include <vector>

#include "recorder/info_lines.h"
#include "recorder/info_statements.h"
#include "recorder/kl_reader.h"

namespace qumbrel {

void fkt_ReadKLFileInfo(Program& ctx, FileInfoList& list, const std::string& path) {
    KLInfo info;
    KLBatchInfo batch;
    InfoRows rows;
    auto& lines = list.lines;
    auto line = [&lines](std::string_view label, std::string_view value) {
        lines.push_back(std::string(label) + "\t" + std::string(value));
    };
    std::vector<std::function<void()>> statements = {
        [&] { lines.clear(); },
        [&] {
            KLGetInfo(ctx, 0, path, info);
            KLGetBatchInfo(ctx, 0, path, batch);
            rows = info_rows(info);
            rows.extChCount = info.extChCount;
            rows.ctrlChCount = info.ctrlChCount;
            rows.ctrlNum = info.ctrlNum;
            rows.pvEventNum = info.pvEventNum;
        },
    };
    add_common_info_lines(statements, list, rows);
    statements.push_back([&] {
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
    });
    run_info_statements(ctx, "fkt_ReadKLFileInfo()", statements);
}

}  // namespace qumbrel
