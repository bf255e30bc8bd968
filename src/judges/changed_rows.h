#ifndef ZEL_SRC_JUDGES_CHANGED_ROWS_H_
#define ZEL_SRC_JUDGES_CHANGED_ROWS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ZELJudges {

/// In which rows of cells the marked ones lie.
class ChangedRows {
  public:
    ChangedRows(const std::vector<uint16_t>& marks, size_t rows);

    /// Cells in the one band that may be a ticker: rows of which most cells are marked, near the upper or the
    /// lower end.
    size_t ticker() const;

    /// Cells outside the rows where tickers run.
    size_t inner() const;

  private:
    size_t band(size_t first, size_t last) const;

    size_t columns_;
    std::vector<size_t> counts_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_CHANGED_ROWS_H_
