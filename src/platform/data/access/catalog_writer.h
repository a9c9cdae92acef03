#pragma once

#include "platform/data/access/relationships.h"
#include "platform/data/access/table_writer.h"

namespace varo::access {

/// Users and groups that every file knows.
enum class KnownUser { Users, Engine, Creator, Admin };

/// What the catalog says of an object that is to be added.
struct NewObject {
    qint32 id = 0;  ///< of a table the page of its definition
    qint32 parent = 0;
    QString name{};
    int type = 0;
    quint32 flags = 0;
    KnownUser owner = KnownUser::Admin;
    QByteArray properties{};
};

/// Adds objects to the catalog of a file that is being written, and who may do what with them. They
/// are part of the file from then on; everything that fails throws data::Error.
class CatalogWriter {
  public:
    explicit CatalogWriter(PageFile& file);

    void addObject(const NewObject& object);

    /// `mask` are the bits of what is allowed; `isInherited`, whether new objects below this one
    /// have them too.
    void addRight(qint32 object, KnownUser user, quint32 mask, bool isInherited = false);

    /// Adds a relationship with these flags to the table of them.
    void addRelationship(const QString& name, const RelationshipSide& referencing,
                         const RelationshipSide& referenced, quint32 flags);

  private:
    QByteArray sid(KnownUser user) const;

    PageFile& file_;
};

/// What tables of users have as the object above them, and as their type.
inline constexpr qint32 kTablesContainer = 0x0F000001;
inline constexpr int kTableType = 1;

}  // namespace varo::access
