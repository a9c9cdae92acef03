#pragma once

#include <QMimeData>
#include <QStringList>
#include <QUrl>

namespace varo::ui {

/// Paths of the files in what is dragged; those elsewhere than on this computer are left out.
inline QStringList droppedFiles(const QMimeData& dragged) {
    QStringList files;
    const QList<QUrl> urls = dragged.urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile()) {
            files.append(url.toLocalFile());
        }
    }
    return files;
}

}  // namespace varo::ui
