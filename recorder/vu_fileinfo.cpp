// fkt_ReadVUFileInfo: the file information list of the run page for a VU file.
#include <functional>
#include <string>
#include <vector>

#include "recorder/info_lines.h"
#include "recorder/info_statements.h"
#include "recorder/vu_reader.h"

namespace qumbrel {

void fkt_ReadVUFileInfo(Program& ctx, FileInfoList& list, const std::string& path) {
    VUInfo info;
    VUBatchInfo batch;
    InfoRows rows;
    auto& lines = list.lines;
    auto line = [&lines](std::string_view label, std::string_view value) {
        lines.push_back(std::string(label) + "\t" + std::string(value));
    };
    std::vector<std::function<void()>> statements = {
        [&] { lines.clear(); },
        [&] {
            VUGetInfo(ctx, 0, path, info);
            VUGetBatchInfo(ctx, 0, path, batch);
            rows = info_rows(info);
            rows.extChCount = info.extChCount;
        },
    };
    add_common_info_lines(statements, list, rows);
    statements.push_back([&] {
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
    });
    run_info_statements(ctx, "fkt_ReadVUFileInfo()", statements);
}

}  // namespace qumbrel
