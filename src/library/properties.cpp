#include "library/properties.h"

#include "store/attempt.h"

namespace varo {

bool readNodesWithProperty(CurrentLibrary& library, NodeType kind, std::vector<qint32>& ids) {
    data::Recordset rs;
    return library.funcs().GetAllPropertyByType(kind, rs, library.connection()) && attempt([&] {
               const int node = rs.column(u"NodeID");
               for (; !rs.atEnd(); rs.moveNext()) {
                   ids.push_back(rs.integer(node));
               }
           });
}

QString propertiesNotReadMessage() {
    return QStringLiteral("无法读取“属性”信息！");
}

}  // namespace varo
