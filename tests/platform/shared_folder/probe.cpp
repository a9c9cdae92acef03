#include "platform/shared_folder/shared_folder.h"

/// Writes the folder into `folder`.
extern "C" void sharedFolder(QString* folder) {
    *folder = varo::GetVaroSharedFolder().value_or(QString());
}
