#pragma once

#include <dirent.h>

#include <memory>

namespace quarn {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

/// A folder being read; closed when it goes. Null where it could not be opened (errno says why).
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

}  // namespace quarn
