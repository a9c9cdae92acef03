#include "formula/symbol_table.h"

namespace varo {

namespace {

constexpr SymbolButton kOperatorSymbols[] = {
    {u"左括号", u"左括号", u"{(}", u"("}, {u"右括号", u"右括号", u"{)}", u")"},
    {u"加", u"加", u"{+}", u"+"},         {u"减", u"减", u"{-}", u"−"},
    {u"乘", u"乘", u"{*}", u"×"},         {u"除", u"除", u"{/}", u"÷"},
    {u"乘方", u"乘方", u"{^}", u"xʸ"},    {u"阶乘", u"阶乘", u"{(}{)}{!}{left}{left}", u"n!"},
};

constexpr SymbolButton kTriFunctionSymbols[] = {
    {u"正弦", u"正弦：sin(real)", u"sin{(}{)}{left}", u"sin"},
    {u"余弦", u"余弦：cos(real)", u"cos{(}{)}{left}", u"cos"},
    {u"正切", u"正切：tan(real)", u"tan{(}{)}{left}", u"tan"},
    {u"反正弦", u"反正弦：arcsin(real)", u"arcsin{(}{)}{left}", u"arcsin"},
    {u"反余弦", u"反余弦：arccos(real)", u"arccos{(}{)}{left}", u"arccos"},
    {u"反正切", u"反正切：arctan(real)", u"arctan{(}{)}{left}", u"arctan"},
    {u"反余切", u"反余切：ctan(real)", u"arcctan{(}{)}{left}", u"arcctan"},
};

constexpr SymbolButton kMathFunctionSymbols[] = {
    {u"开方", u"开方：sqrt(real)", u"sqrt{(}{)}{left}", u"√"},
    {u"自然对数", u"自然对数：ln(real)", u"ln{(}{)}{left}", u"ln"},
    {u"对数", u"对数：log(real)", u"log{(}{)}{left}", u"log"},
    {u"取整", u"取整：int(real)", u"int{(}{)}{left}", u"int"},
    {u"取小数", u"取小数：deci(real)", u"deci{(}{)}{left}", u"deci"},
    {u"精度", u"精度：preci(real,int)", u"preci{(}{)}{left}", u"preci"},
    {u"求余", u"求余：mod(real,real)", u"mod{(}{)}{left}", u"mod"},
};

constexpr SymbolButton kConstSymbols[] = {
    {u"圆周率", u"圆周率：PI=3.14159265359…", u"pi", u"π"},
    {u"指数", u"指数：exp=2.71828", u"exp", u"e"},
    {u"真", u"真：True=1", u"1", u"True"},
    {u"假", u"假：False=0", u"0", u"False"},
};

constexpr SymbolButton kConversionSymbols[] = {
    {u"R2s", u"将实数取精度转换成字符串：R2S(real,int)", u"R2S{(}{)}{left}", u"R2S"},
    {u"S2r", u"将字符串转换成实数：S2R(string)", u"S2R{(}{)}{left}", u"S2R"},
    {u"Case", u"转换大小写：StrCase(string,boolean)", u"StrCase{(}{)}{left}", u"StrCase"},
};

constexpr SymbolButton kTreatStringSymbols[] = {
    {u"合并字符串", u"合并字符串：StrCat(string,string,…)", u"StrCat{(}{)}{left}", u"StrCat"},
    {u"子串", u"子串：StrSub(string,int,int,boolean)", u"StrSub{(}{)}{left}", u"StrSub"},
    {u"左子串", u"左子串：Left(string,int)", u"Left{(}{)}{left}", u"Left"},
    {u"右子串", u"右子串：Right(string,int)", u"Right{(}{)}{left}", u"Right"},
    {u"部份子串", u"部份子串：StrSubN(string,string,int)", u"StrSubN{(}{)}{left}", u"StrSubN"},
};

constexpr SymbolButton kFindStringSymbols[] = {
    {u"字符串长度", u"字符串长度：StrLen(string)", u"StrLen{(}{)}{left}", u"StrLen"},
    {u"子串位置", u"子串位置：StrFind(string,string,int)", u"StrFind{(}{)}{left}", u"StrFind"},
    {u"子串次数", u"子串次数：StrFindN(string,string)", u"StrFindN{(}{)}{left}", u"StrFindN"},
    {u"匹配字符串位置", u"匹配字符串长度：StrMisMatch(str,str,int,int,bool)",
     u"StrMismatch{(}{)}{left}", u"StrMismatch"},
};

constexpr SymbolButton kCutStringSymbols[] = {
    {u"删除子串", u"删除子串：StrTrim(string,string,boolean)", u"StrTrim{(}{)}{left}", u"StrTrim"},
    {u"删除空格", u"删除空格：StrTrimS(string)", u"StrTrimS{(}{)}{left}", u"StrTrimS"},
    {u"替换子串", u"替换子串：StrReplace(str,str,str,int,bool)", u"StrReplace{(}{)}{left}",
     u"StrReplace"},
    {u"删除所有相同子串", u"删除所有相同子串：StrDelete(string,string)", u"StrDelete{(}{)}{left}",
     u"StrDelete"},
    {u"插入子串", u"插入子串：StrInsert(String,string,int)", u"StrInsert{(}{)}{left}",
     u"StrInsert"},
};

constexpr SymbolButton kLoginSymbols[] = {
    {u"与", u"与", u" And ", u"And"},
    {u"或", u"或", u" Or ", u"Or"},
    {u"非", u"非", u"Not{(}{)}{left}", u"Not"},
};

constexpr SymbolButton kRelationSymbols[] = {
    {u"大于", u"大于", u" > ", u">"},
    {u"小于", u"小于", u" < ", u"<"},
    {u"大于等于", u"大于等于", u" >= ", u"≥"},
    {u"小于等于", u"小于等于", u" <= ", u"≤"},
    {u"等于", u"等于", u" = ", u"="},
    {u"不等于", u"不等于", u" <> ", u"≠"},
    {u"包含", u"包含", u" Like ", u"Like"},
    {u"匹配", u"匹配", u" Equal ", u"Equal"},
    {u"条件运算", u"条件运算：If(double,double,double)", u"If{(}{)}{left}", u"If"},
};

constexpr std::array<SymbolTab, kSymbolTabs> kTabs{{
    {u"运算符", u"Operator", kOperatorSymbols},
    {u"三角函数", u"TriFunction", kTriFunctionSymbols},
    {u"算术函数", u"MathFunction", kMathFunctionSymbols},
    {u"常数", u"Const", kConstSymbols},
    {u"类型转换", u"Conversion", kConversionSymbols},
    {u"合并分解", u"TreatString", kTreatStringSymbols},
    {u"大小位置", u"FindString", kFindStringSymbols},
    {u"修剪字符", u"CutString", kCutStringSymbols},
    {u"逻辑运算", u"Login", kLoginSymbols},
    {u"关系运算", u"Relation", kRelationSymbols},
}};

}  // namespace

const std::array<SymbolTab, kSymbolTabs>& symbolTabs() {
    return kTabs;
}

}  // namespace varo
