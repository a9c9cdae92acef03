-- The tables of a library. Identifiers are never used twice, so that a row that is left behind by a
-- deleted folder or formula does not attach itself to a new one.

CREATE TABLE Tree (
  ID      INTEGER PRIMARY KEY AUTOINCREMENT,
  Name    TEXT COLLATE NOCASE,
  PID     INTEGER DEFAULT 0,   -- folder above, 0 at the top
  OrderID INTEGER
);
CREATE INDEX TreeOrder ON Tree (PID, OrderID);

-- Pic is the last column: a long value that other columns follow is built up in memory when it is
-- written, and stands in the way when they are read.
CREATE TABLE Formula (
  ID      INTEGER PRIMARY KEY AUTOINCREMENT,
  Name    TEXT COLLATE NOCASE,
  Formula TEXT COLLATE NOCASE,
  Memo    TEXT COLLATE NOCASE,
  PicType INTEGER DEFAULT 0,   -- 0 no picture, 2 its bytes are in Pic
  PID     INTEGER DEFAULT 0,
  OrderID INTEGER,
  Pic     BLOB
);
CREATE INDEX FormulaOrder ON Formula (PID, OrderID);

CREATE TABLE RecentVar (
  VarName       TEXT COLLATE NOCASE,
  FormulaID     INTEGER DEFAULT 0,
  Value         TEXT COLLATE NOCASE,
  VarSourceType INTEGER DEFAULT 0,
  VarMemo       TEXT COLLATE NOCASE
);
CREATE INDEX RecentVarName ON RecentVar (VarName, FormulaID);

CREATE TABLE Property (
  PropID   INTEGER,
  PropName TEXT COLLATE NOCASE,
  FilterID INTEGER DEFAULT 0,
  NodeID   INTEGER,
  NodeType INTEGER             -- 1 folder, 2 formula
);
CREATE INDEX PropertyType ON Property (NodeType, PropID);
CREATE INDEX PropertyNode ON Property (NodeID, NodeType, PropID);
CREATE INDEX PropertyName ON Property (PropName, NodeType);

CREATE TABLE FilterCond (
  ID       INTEGER,
  UserID   INTEGER,            -- the FilterID of a property
  ParentID INTEGER DEFAULT 0,
  Type     INTEGER             -- 1 and, 2 or, 3 not, 4 a comparison
);
CREATE INDEX FilterCondParent ON FilterCond (UserID, ParentID, ID);

CREATE TABLE FilterExpressions (
  FilterID    INTEGER,
  ExpID       INTEGER,
  TableName   TEXT COLLATE NOCASE,
  FieldName   TEXT COLLATE NOCASE,
  FieldType   INTEGER,
  CompareType INTEGER,
  TheConst    TEXT COLLATE NOCASE
);
CREATE INDEX FilterExpressionsLeaf ON FilterExpressions (FilterID, ExpID);

CREATE TABLE TableInfo (
  PrptyName TEXT COLLATE NOCASE,
  PrptyVal  TEXT COLLATE NOCASE
);
