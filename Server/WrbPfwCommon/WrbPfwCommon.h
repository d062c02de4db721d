/* fpkExtract, fpkExtractFile: unpack a log package of an agent, a Windows cabinet file, into a folder.
 *
 * An open stand-in for the server's firewall library; takes its place as WrbPfwCommon_64x.dll and is bound at run time.
 * The library that it stands in for has fpkExtract only.
 * C linkage, plain name, usable from C and C++.
 *
 * A package comes from the network and is trusted in nothing. It is unpacked whole or not at all: when anything about
 * it is wrong, every file and folder that the call has made is removed again and the call returns false. Refused are
 *   - entries whose name is not a plain relative path: with "..", ".", a drive, a stream (any ":"), a leading
 *     separator, an empty part, a part that ends in a dot or a blank, a device name (NUL, COM1.txt, ...), a control
 *     character or one of <>"|?*, or a name that the ANSI code page cannot hold;
 *   - two entries of one name; an entry where the folder has a file already (nothing is ever overwritten) or a link;
 *   - an entry whose path, folder included, is longer than 259 bytes;
 *   - more than 10,000 entries, an entry of more than 256 MiB, more than 1 GiB in all;
 *   - wanted entries that would leave less than 40 MiB, or less than two percent, of the disk free;
 *   - a cabinet that is part of a set, and one that makes its reader go over the same data again and again;
 *   - anything that the system's cabinet library finds damaged.
 * Dates, attributes and "run me" marks of entries are not carried over. Any thread may call, with any number of calls
 * at once; nothing is kept between calls.
 */
#ifndef WRBPFWCOMMON_H
#define WRBPFWCOMMON_H

#include <stdbool.h>

/* An entry has been found and checked by name; `return false` leaves it out: its data is still read and checked, but
 * nothing is written. So a call whose callback refuses every entry tests a package. */
#define FPK_ENTRY_FOUND 1u
/* The entry lies in the folder, complete. The result is ignored. The callback may do with the file as it likes. */
#define FPK_ENTRY_WRITTEN 2u

/* `entry` is the relative path, in the ANSI code page, with backslashes; `directory` and `context` are the arguments of
 * the call. All FPK_ENTRY_FOUND events come first, in the package's order; FPK_ENTRY_WRITTEN events come after the
 * whole package has been unpacked. The callback runs on the calling thread. */
typedef bool (*fpkCallback)(const char* entry, const char* directory, unsigned event, void* context);

#if defined(WRB_FPK_BUILD)
#define WRB_FPK_API __declspec(dllexport)
#else
#define WRB_FPK_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* `package` and `directory` (which must exist) are paths in the ANSI code page. Without a callback every entry is
 * unpacked. Returns true when the package is sound and every wanted entry has been written. */
WRB_FPK_API bool fpkExtract(const char* package, const char* directory, fpkCallback callback, void* context);

/* The same for a package that the caller has open: the handle of a disk file with the right to read. It stays open, and
 * its file position is not kept. What the caller has checked by the handle is what is unpacked. */
WRB_FPK_API bool fpkExtractFile(void* package, const char* directory, fpkCallback callback, void* context);

#ifdef __cplusplus
}
#endif

#endif
