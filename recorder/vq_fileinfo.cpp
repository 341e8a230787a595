// fkt_ReadVQFileInfo: the file information list of the run page for a VQ file.
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "recorder/info_lines.h"
#include "recorder/info_statements.h"
#include "recorder/vq_reader.h"

namespace qumbrel {

void fkt_ReadVQFileInfo(Program& ctx, FileInfoList& list, const std::string& path) {
    VQInfo info;
    VQBatchInfo batch;
    std::array<VQSignInfo, kVqSignatures> signs;
    InfoRows rows;
    auto& lines = list.lines;
    auto line = [&lines](std::string_view label, std::string_view value) {
        lines.push_back(std::string(label) + "\t" + std::string(value));
    };
    std::vector<std::function<void()>> statements = {
        [&] { lines.clear(); },
        [&] {
            VQGetInfo(ctx, 0, path, info);
            VQGetBatchInfo(ctx, 0, path, batch);
            for (std::int32_t s = 0; s < kVqSignatures; ++s)
                VQGetSignData(ctx, 0, path, s, signs[static_cast<std::size_t>(s)]);
            rows = info_rows(info);
            rows.opeLogNum = info.opeLogNum;
        },
    };
    add_common_info_lines(statements, list, rows);
    statements.push_back([&] {
        for (std::size_t s = 0; s < signs.size(); ++s) {
            const std::string n = "Sign. " + std::to_string(s + 1);
            const VQSignInfo& g = signs[s];
            line(n + " Name: ", g.name);
            line(n + " Comment: ", g.comment);
            line(n + " Date: ", g.date + " " + g.time);
            line(n + " HW: ", g.host);
            line(n + " Sts.: ", g.statusText);
        }
    });
    statements.push_back([&] {
        for (std::size_t k = 0; k < batch.header.size(); ++k)
            line("Header " + std::to_string(k + 1) + ": ", batch.header[k]);
        line("Batch Name: ", batch.batchName);
        line("Batch No: ", std::to_string(batch.batchNo));
        for (std::size_t k = 0; k < batch.comment.size(); ++k)
            line("Comment " + std::to_string(k + 1) + ": ", batch.comment[k]);
    });
    run_info_statements(ctx, "fkt_ReadVQFileInfo()", statements);
}

}  // namespace qumbrel
