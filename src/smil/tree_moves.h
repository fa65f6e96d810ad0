// Attributes and children that change their node without being copied.
#ifndef MMSBRIX_SMIL_TREE_MOVES_H
#define MMSBRIX_SMIL_TREE_MOVES_H

#include "smil/smilnode.h"

namespace mmsbrix {

class TreeMoves {
 public:
  /// Each node has what the other had; the tags stay.
  static void exchangeContents(CSMILNode& one, CSMILNode& other) noexcept;
  /// Adds the attributes of `from` to those of `to`, as AddAttribute does, and moves the children
  /// behind those of `to`.  Without memory for it std::bad_alloc is thrown, and nothing has
  /// changed.
  static void append(CSMILNode& to, CSMILNode& from);
};

}  // namespace mmsbrix

#endif  // MMSBRIX_SMIL_TREE_MOVES_H
