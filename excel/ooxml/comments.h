#pragma once
// Deleting the comments of cells: a legacy note is two things, the comment in the sheet's
// comments part and its Note shape in the VML part, and both go; a threaded comment goes
// with its replies (the persons stay). A part left empty goes with its relationship and its
// content-type override; a VML part left without shapes also takes the sheet's
// <legacyDrawing>. Edits go into `replaced`/`removed` for ZipPackage::save_as, on top of
// what is already there.
#include <map>
#include <set>
#include <string>
#include <vector>

#include "excel/ooxml/workbook.h"
#include "excel/ooxml/zip_package.h"

namespace qumbrel::ooxml {

// The number of legacy notes deleted.
std::size_t delete_comments(const ZipPackage& package, const std::string& sheetPart,
                            const std::vector<CellAddress>& cells,
                            std::map<std::string, std::string>& replaced,
                            std::set<std::string>& removed);

}  // namespace qumbrel::ooxml
