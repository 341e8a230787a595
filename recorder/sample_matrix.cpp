#include "recorder/sample_matrix.h"

namespace qumbrel {

void SampleMatrix::reset(std::size_t rows, std::size_t cols) {
    rows_ = rows;
    cols_ = cols;
    // Fresh vectors, so a smaller file gives its memory back.
    std::vector<double>(rows * cols, 0.0).swap(values_);
    std::vector<SampleKind>(rows * cols, SampleKind::Empty).swap(kinds_);
}

}  // namespace qumbrel
