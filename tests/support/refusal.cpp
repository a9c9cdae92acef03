#include "support/refusal.h"

#include "support/test_library.h"

#include <QFileInfo>

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sqlite3.h>

namespace varo::test {

namespace {

/// The connections of this process to databases, and the trigger for each of those.
std::set<sqlite3*> handles;
std::map<QString, QByteArray> triggers;

QString pathOf(sqlite3* handle) {
    return QFileInfo(QString::fromUtf8(sqlite3_db_filename(handle, "main"))).canonicalFilePath();
}

void refuseOn(sqlite3* handle) {
    const auto trigger = triggers.find(pathOf(handle));
    if (trigger != triggers.end()) {
        EXPECT_EQ(sqlite3_exec(handle, trigger->second.constData(), nullptr, nullptr, nullptr),
                  SQLITE_OK)
            << sqlite3_errmsg(handle);
    }
}

int noteOpened(sqlite3* handle, char** /*error*/, const sqlite3_api_routines* /*routines*/) {
    handles.insert(handle);
    const auto forget = [](void* closed) { handles.erase(static_cast<sqlite3*>(closed)); };
    sqlite3_create_function_v2(
        handle, "noted", 0, SQLITE_UTF8, handle, [](auto*, int, auto**) {}, nullptr, nullptr,
        forget);
    refuseOn(handle);
    return SQLITE_OK;
}

const int noting = sqlite3_auto_extension(reinterpret_cast<void (*)()>(noteOpened));

}  // namespace

Refusal::Refusal(const QString& path, const QString& trigger)
    : path_(QFileInfo(path).canonicalFilePath()) {
    requireSqlite();
    EXPECT_EQ(noting, SQLITE_OK);
    triggers[path_] = QByteArray("Create Temp Trigger Refuse ") + trigger.toUtf8();
    for (sqlite3* handle : handles) {
        refuseOn(handle);
    }
}

Refusal::~Refusal() {
    triggers.erase(path_);
    for (sqlite3* handle : handles) {
        if (pathOf(handle) == path_) {
            sqlite3_exec(handle, "Drop Trigger If Exists temp.Refuse", nullptr, nullptr, nullptr);
        }
    }
}

}  // namespace varo::test
