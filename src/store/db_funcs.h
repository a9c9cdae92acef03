#pragma once

#include "platform/data/connection.h"
#include "platform/questions/questions.h"

#include <QList>
#include <QString>

namespace varo {

/// A query made elsewhere: its text with a `?` for each value, and the values in order.
struct Statement {
    QString text;
    QList<QString> values;
};

/// How a find operation compares.
enum FindMode { FindContains = 0, FindEquals = 1 };

/// The kinds of node that a property belongs to.
enum NodeType { NodeTypeFolder = 1, NodeTypeFormula = 2 };

/// The operations on one library's data. Stateless: every operation takes the connection. Each
/// returns true when it ran to its end and false when any step failed; it then shows nothing and
/// has closed what it opened. Listing operations leave `rs` open on the result, positioned on the
/// first row (an empty result is no failure); the caller closes it with CloseRecordset. Statements
/// that name a missing row change nothing and succeed. Text is bound, never spliced into a
/// statement.
class clsDBFuncs {
  public:
    /// `questions` shows the description of a failed transfer of picture bytes; it must outlive
    /// this.
    explicit clsDBFuncs(Questions& questions) : questions_(&questions) {}

    /// True when the file has the structure of a library: tables Formula, RecentVar and Tree with
    /// their columns, and whatever table is there keeps what is stored in it (see
    /// library_structure.h).
    bool CheckNewDB(data::Connection& conn);

    // Folders and formulas: listing. The listings of formulas have every column but Pic; a picture
    // is taken out with ExtractPicture.
    bool GetChildFormulaNode(qint32 PID, data::Recordset& rs, data::Connection& conn);
    bool GetFormulaByPID(qint32 PID, data::Recordset& rs, data::Connection& conn);
    bool GetFormulaByID(qint32 ID, data::Recordset& rs, data::Connection& conn);
    bool GetNodeInfo(data::Recordset& rs, data::Connection& conn);
    bool GetVarInfo(data::Recordset& rs, data::Connection& conn);
    bool FindShowFolder(const Statement& statement, data::Recordset& rs, data::Connection& conn);
    bool FindShowFormula(const Statement& statement, data::Recordset& rs, data::Connection& conn);
    /// Formulas that have a picture. `orderClause` is SQL of the caller's own, never user text.
    bool GetFormulaByOrder(const QString& orderClause, data::Recordset& rs, data::Connection& conn);
    /// In `mode` FindContains or FindEquals; any other mode fails.
    bool FindFolder(const QString& text, data::Recordset& rs, data::Connection& conn, int mode);
    bool FindFormula(const QString& text, data::Recordset& rs, data::Connection& conn, int mode);
    bool FindFormulaByMemo(const QString& text, data::Recordset& rs, data::Connection& conn,
                           int mode);

    // Folders and formulas: changing. A row is stored whole: changing another field of a formula
    // reads and writes its picture too, in memory.
    bool RenameFolder(qint32 ID, const QString& name, data::Connection& conn);
    bool RenameFormula(qint32 ID, const QString& name, data::Connection& conn);
    bool DelFolder(qint32 ID, data::Connection& conn);
    bool DelFormula(qint32 ID, data::Connection& conn);
    bool DelFormulaByPID(qint32 PID, data::Connection& conn);
    /// The rows of one parent are listed by OrderID, those with equal numbers in the order of their
    /// insertion. OrderID is a number of 32 bits, different in each of them; in a file where it is
    /// not (NULL, equal or larger numbers), an operation that would go wrong numbers the rows of
    /// the parent 1, 2, 3 ... in their order first, in the same transaction.
    ///
    /// Inserts behind the last row of the parent, with the largest OrderID plus 1, and 1 when there
    /// is none; `newID` receives the identifier.
    bool AddNewFolder(qint32 PID, const QString& name, qint32& newID, data::Connection& conn);
    bool AddNewFormula(qint32 PID, const QString& name, const QString& formula, const QString& memo,
                       qint32 picType, qint32& newID, data::Connection& conn);
    bool EditFormulaMemo(qint32 ID, const QString& memo, data::Connection& conn);
    bool EditFormulaExpression(qint32 ID, const QString& formula, data::Connection& conn);
    /// The one operation that throws data::Error instead of returning false.
    bool EditAllFormulaInfo(qint32 ID, const QString& name, const QString& formula,
                            const QString& memo, qint32 picType, data::Connection& conn);
    /// Swaps the OrderID of two rows of `tableName` ("Tree" or "Formula"). Of two rows with the
    /// same parent the places are then exchanged, and every other row keeps its place. False with
    /// nothing changed when a row is missing.
    bool ExchangeOrderID(qint32 ID1, qint32 ID2, const QString& tableName, data::Connection& conn);

    // Variables.
    bool AddNewVar(const QString& varName, qint32 formulaID, const QString& value,
                   data::Connection& conn);
    bool EditFormulaVarValue(const QString& varName, qint32 formulaID, const QString& value,
                             data::Connection& conn);
    bool EditFormulaVarPara(const QString& varName, qint32 formulaID, qint32 varSourceType,
                            const QString& varMemo, data::Connection& conn);
    /// The rows of one variable name in all formulas.
    bool GetVarInfoByVarName(const QString& varName, data::Recordset& rs, data::Connection& conn);
    /// The rows of one variable name, as given or all in small or capital letters, that formula
    /// `formulaID` can see: its own and the unowned ones (FormulaID 0). The other operations ignore
    /// the case of ASCII letters only: they are to be given the name as its row has it. Takes the
    /// same time however many formulas use the name.
    bool GetVarInfoOfFormula(const QString& varName, qint32 formulaID, data::Recordset& rs,
                             data::Connection& conn);
    /// The rows of all variables that the formula can see.
    bool GetVarInfoByFormulaID(qint32 formulaID, data::Recordset& rs, data::Connection& conn);
    /// The distinct parameters (column VarMemo) of all variables with this source, in alphabetical
    /// order.
    bool GetVarMemoBySourceType(qint32 varSourceType, data::Recordset& rs, data::Connection& conn);
    /// Hands the variable's row over to another formula, with a new value unless `value` is "".
    bool ChangeVarBelong(const QString& varName, qint32 oldFormulaID, qint32 newFormulaID,
                         data::Connection& conn, const QString& value);

    // Properties, and the conditions that the locate function reads.
    bool GetProperty(qint32 nodeID, qint32 nodeType, data::Recordset& rs, data::Connection& conn);
    bool GetAllPropertyByType(qint32 nodeType, data::Recordset& rs, data::Connection& conn);
    bool GetPropertyByType(qint32 nodeType, data::Recordset& rs, data::Connection& conn);
    bool AddProperty(qint32 propID, const QString& propName, qint32 filterID, qint32 nodeID,
                     qint32 nodeType, data::Connection& conn);
    bool RenProperty(qint32 propID, const QString& propName, qint32 nodeID, qint32 nodeType,
                     data::Connection& conn);
    bool EditRelation(qint32 propID, qint32 filterID, qint32 nodeID, qint32 nodeType,
                      data::Connection& conn);
    bool DelProperty(qint32 propID, qint32 nodeID, qint32 nodeType, data::Connection& conn);
    bool DelPropertyByNodeID(qint32 nodeID, qint32 nodeType, data::Connection& conn);
    /// Filters and nodes that carry a property of this name; columns FilterID, NodeID, NodeType
    /// and, for formulas, PID. Fails for any other node type.
    bool GetLocateInfoByPropName(const QString& propName, qint32 nodeType, data::Recordset& rs,
                                 data::Connection& conn);
    bool GetResFilterCondByParentID(qint32 userID, qint32 parentID, data::Recordset& rs,
                                    data::Connection& conn);
    bool GetResExpressions(qint32 filterID, qint32 expID, data::Recordset& rs,
                           data::Connection& conn);

    // Pictures.
    /// Stores the file's bytes as the formula's picture and sets PicType to 2; on failure the
    /// formula keeps the picture that it had.
    bool AddNewPicture(qint32 formulaID, const QString& fileName, data::Connection& conn);
    /// Stores the file's bytes without touching PicType. A file that cannot be read is told, leaves
    /// the picture as it was, and is no failure; a missing row, or a library that takes no bytes,
    /// is one.
    bool InserFieldFromFile(const QString& fileName, qint32 formulaID, data::Connection& conn);
    bool DelPicture(qint32 formulaID, data::Connection& conn);
    /// Writes the formula's stored picture to `fileName`, replacing a file that is there; false
    /// when the formula is missing or moving the bytes fails (the description has then been shown,
    /// and no partial file is left behind).
    bool ExtractPicture(qint32 formulaID, const QString& fileName, data::Connection& conn);

  private:
    Questions* questions_;
};

}  // namespace varo
