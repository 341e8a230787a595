#pragma once
// Containers for a whole file of samples: a matrix of tagged sample cells (9 bytes a cell:
// the value as a double and a one-byte kind) and a column of short texts kept in one
// buffer. Both are sized once per read.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qumbrel {

// What a cell holds, as the tagged value of the sample arrays: nothing yet, a 16- or
// 32-bit integer sample, or a double (channel numbers, samples placed behind decimals).
enum class SampleKind : std::uint8_t { Empty, Int16, Int32, Double };

struct SampleCell {
    SampleKind kind = SampleKind::Empty;
    double value = 0;
};

// Rows by columns, indexed (row, col) as the sample arrays are: row 0 the channel
// numbers, rows 1.. the samples; column 0 stays unused, channel positions count from 1.
// Stored column by column: a channel's samples arrive from the library in one run, and a
// row-wise reader walks one sequential stream per channel.
class SampleMatrix {
  public:
    // All cells Empty.
    void reset(std::size_t rows, std::size_t cols);
    void clear() { reset(0, 0); }

    std::size_t rows() const { return rows_; }
    std::size_t cols() const { return cols_; }

    SampleCell at(std::size_t row, std::size_t col) const {
        const std::size_t i = col * rows_ + row;
        return {kinds_[i], values_[i]};
    }
    SampleKind kind(std::size_t row, std::size_t col) const { return kinds_[col * rows_ + row]; }
    double value(std::size_t row, std::size_t col) const { return values_[col * rows_ + row]; }
    void set(std::size_t row, std::size_t col, SampleKind kind, double value) {
        const std::size_t i = col * rows_ + row;
        kinds_[i] = kind;
        values_[i] = value;
    }

    // Bytes held for the cells.
    std::size_t memory_bytes() const {
        return values_.capacity() * sizeof(double) + kinds_.capacity();
    }

  private:
    std::size_t rows_ = 0, cols_ = 0;
    std::vector<double> values_;
    std::vector<SampleKind> kinds_;
};

// An array of texts written in order (row 0 first), read by index.
class TextColumn {
  public:
    void clear() {
        chars_.clear();
        ends_.clear();
    }
    void reserve(std::size_t rows, std::size_t bytesPerRow) {
        ends_.reserve(rows);
        chars_.reserve(rows * bytesPerRow);
    }
    void push_back(std::string_view text) {
        chars_.append(text);
        ends_.push_back(chars_.size());
    }
    std::size_t size() const { return ends_.size(); }
    bool empty() const { return ends_.empty(); }
    std::string_view operator[](std::size_t i) const {
        const std::size_t begin = i == 0 ? 0 : ends_[i - 1];
        return std::string_view(chars_).substr(begin, ends_[i] - begin);
    }
    std::size_t memory_bytes() const {
        return chars_.capacity() + ends_.capacity() * sizeof(std::size_t);
    }

  private:
    std::string chars_;
    std::vector<std::size_t> ends_;
};

}  // namespace qumbrel
