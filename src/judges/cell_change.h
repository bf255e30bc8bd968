#ifndef ZEL_SRC_JUDGES_CELL_CHANGE_H_
#define ZEL_SRC_JUDGES_CELL_CHANGE_H_

#include <cstdint>
#include <vector>

namespace ZELJudges {

/// How many 64ths of a level a cell of one frame may differ from that of another without having changed, from
/// the noise that most cells show. As many cells in both.
uint16_t changeLimit(const std::vector<uint16_t>& now, const std::vector<uint16_t>& then);

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_CELL_CHANGE_H_
