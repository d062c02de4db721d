// Paths and names that come from the network, looked at as text before the system gets them.
#pragma once

#include <string_view>

namespace wrb {

// False for a text that names no file, or another one than it says: an empty one, one with a control character or any
// of <>:"/\|?*, one that ends in a dot or a blank ("." and ".." among them), and a device such as NUL or COM1.txt.
bool IsPlainFileName(std::wstring_view name);

// Whether the path is "X:\" with plain names, "." and ".." after it, any separators between them. So it names no
// device, pipe, stream or file of another machine. The drive may still be mapped to another machine.
bool IsDrivePath(std::wstring_view path);

// Whether `path` lies below `folder` at any depth. Both are full paths without "..", spelled as the system spells them;
// letters of either case are the same. Nothing lies below an empty folder.
bool LiesBelow(std::wstring_view path, std::wstring_view folder);

}  // namespace wrb
