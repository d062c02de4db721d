#include "ServerStatus.h"

#include <iterator>

#include "HomeFolder.h"
#include "ServerFiles.h"
#include "ServiceChecks.h"

namespace wrb {

StatusItems ReadServerStatus() {
    const std::wstring home = HomeFolder();
    StatusItems items{CheckHost(), CheckBackEnd()};
    const auto append = [&](StatusItems more) {
        items.insert(items.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    };
    append(CheckPipes());
    append({CheckDatabase(), CheckHome(home)});
    append(CheckInis(home));
    append(
        {CheckKey(home), CheckCounters(), CheckLogLevel(), CheckSpillFolders(), CheckUploads(home), CheckMails(home)});
    return items;
}

}  // namespace wrb
