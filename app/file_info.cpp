#include "app/file_info.h"

#include <cstdio>
#include <filesystem>

#include "pipeline/family_table.h"

namespace qumbrel {

int print_file_info(Program& ctx, const std::string& path) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) {
        std::fprintf(stderr, "qumbrel: %s: no such file\n", path.c_str());
        return 2;
    }
    const auto family = family_of_path(path);
    if (!family) {
        std::fprintf(stderr, "qumbrel: %s: not a recorder file (unknown extension)\n",
                     path.c_str());
        return 2;
    }
    const auto& reader = family_table(ctx).of(family->family).fileInfo;
    if (!reader) {
        std::fprintf(stderr,
                     "qumbrel: %s: the information list of this family is not "
                     "available in this build\n",
                     path.c_str());
        return 2;
    }
    FileInfoList list;
    reader(ctx, list, path);
    for (const auto& line : list.lines) std::printf("%s\n", line.c_str());
    return list.backColor == kInfoColorDamaged ? 1 : 0;
}

}  // namespace qumbrel
