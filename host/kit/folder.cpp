#include "folder.h"

#include "host_texts.h"

namespace host {

const std::vector<FolderName>& folderNames() {
    static const std::vector<FolderName> names = {{"inbox", kTextFolderInbox},
                                                  {"drafts", kTextFolderDrafts},
                                                  {"sent", kTextFolderSent},
                                                  {"trash", kTextFolderTrash}};
    return names;
}

}  // namespace host
