#pragma once

#include <dirent.h>

#include <memory>

namespace quarn {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

/// An open folder, closed with the object. Null if it could not be opened (see errno).
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

}  // namespace quarn
