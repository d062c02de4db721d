// A struct that our programs share by name: in a section that SYSTEM, the administrators and the account of the program
// that made it may open.
#pragma once

#include <windows.h>

#include <new>

#include "AccessList.h"
#include "AnySession.h"
#include "Handle.h"
#include "SharedMemory.h"

namespace wrb {

// `Block` is made of lock-free atomic numbers.
template <typename Block>
class SharedBlock {
  public:
    // The owner's side: a fresh block, also where an earlier owner has left one to somebody who still looks at it.
    // False: GetLastError tells.
    bool Create(const wchar_t* name) {
        AccessList access;
        if (!access.Set({}, L"")) {
            return false;
        }
        m_section.Reset(
            CreateFileMappingW(INVALID_HANDLE_VALUE, access.Attributes(), PAGE_READWRITE, 0, sizeof(Block), name));
        if (!m_section || !Map()) {
            return false;
        }
        new (m_view.Get()) Block();
        return true;
    }

    // The other side, in any session. False: GetLastError tells; ERROR_FILE_NOT_FOUND when there is no owner.
    bool Open(const wchar_t* name) {
        m_section = OpenInAnySession(
            name, [](const wchar_t* each) { return OpenFileMappingW(FILE_MAP_READ | FILE_MAP_WRITE, FALSE, each); });
        return m_section && Map();
    }

    explicit operator bool() const { return static_cast<bool>(m_view); }
    Block& operator*() const { return *static_cast<Block*>(m_view.Get()); }
    Block* operator->() const { return static_cast<Block*>(m_view.Get()); }

  private:
    bool Map() {
        m_view.Reset(MapViewOfFile(m_section.Get(), FILE_MAP_READ | FILE_MAP_WRITE, 0, 0, sizeof(Block)));
        if (m_view && UsableBytes(m_view.Get()) < sizeof(Block)) {
            m_view.Reset();
            SetLastError(ERROR_INVALID_ADDRESS);
        }
        return static_cast<bool>(m_view);
    }

    KernelHandle m_section;
    MappedView m_view;
};

}  // namespace wrb
