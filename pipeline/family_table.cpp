#include "pipeline/family_table.h"

namespace qumbrel {

FamilyFunctions& FamilyTable::of(RecorderFamily f) {
    switch (f) {
        case RecorderFamily::VT:
            return vt;
        case RecorderFamily::VU:
            return vu;
        case RecorderFamily::VQ:
            return vq;
        case RecorderFamily::HN:
            return hn;
        case RecorderFamily::KL:
            return kl;
    }
    return vt;
}

FamilyTable& family_table(Program& ctx) {
    auto& slot = ctx.state<FamilyTableSlot>();
    if (!slot.table) slot.table = default_family_table();
    return *slot.table;
}

Flag fkt_isfamilyfile(const std::string& path) {
    return to_flag(family_of_path(path).has_value());
}

}  // namespace qumbrel
