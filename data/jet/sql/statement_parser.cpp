#include "data/jet/sql/statement_parser.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

#include "data/jet/format/errors.h"
#include "data/jet/sql/syntax_error.h"
#include "data/jet/sql/tokens.h"

namespace rdv::jet::sql {
namespace {

constexpr TextView kUnknownStatement =
    u"Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'.";
constexpr TextView kSelectError =
    u"The SELECT statement includes a reserved word or an argument name that is misspelled or "
    u"missing, or the punctuation is incorrect.";
constexpr TextView kFromError = u"Syntax error in FROM clause.";
constexpr TextView kWhereError = u"Syntax error in WHERE clause.";
constexpr TextView kOrderError = u"Syntax error in ORDER BY clause.";
constexpr TextView kUpdateError = u"Syntax error in UPDATE statement.";
constexpr TextView kInsertError = u"Syntax error in INSERT INTO statement.";
constexpr TextView kDeleteError = u"Syntax error in DELETE statement.";
constexpr TextView kTrailingError = u"Characters found after end of SQL statement.";
constexpr TextView kTooComplex = u"Query is too complex.";
constexpr size_t kMaxTopDigits = 9;

// Words that are no names unless they are quoted.
constexpr TextView kReserved[] = {u"SELECT", u"FROM",   u"WHERE",  u"ORDER", u"BY",  u"ASC",
                                  u"DESC",   u"UPDATE", u"SET",    u"INTO",  u"AND", u"OR",
                                  u"INSERT", u"DELETE", u"VALUES", u"NOT",   u"IS",  u"NULL"};

constexpr TextView kArithmetic = u"Arithmetic";
constexpr TextView kOwnName = u"A name of its own for a column or a table (AS)";
constexpr TextView kManyTables = u"More than one table";
constexpr TextView kInnerQuery = u"A query within a statement";

// What the language has beyond that, by the word or sign that begins it.
struct Unsupported {
  TextView begins;
  TextView what;
};
constexpr Unsupported kUnsupported[] = {
    {u"+", kArithmetic},
    {u"-", kArithmetic},
    {u"*", kArithmetic},
    {u"/", kArithmetic},
    {u"\\", kArithmetic},
    {u"^", kArithmetic},
    {u"MOD", kArithmetic},
    {u"&", u"The joining of texts"},
    {u"AS", kOwnName},
    {u"PERCENT", u"TOP ... PERCENT"},
    {u"JOIN", u"A join"},
    {u"INNER", u"A join"},
    {u"LEFT", u"A join"},
    {u"RIGHT", u"A join"},
    {u"GROUP", u"GROUP BY"},
    {u"HAVING", u"HAVING"},
    {u"UNION", u"UNION"},
    {u"SELECT", kInnerQuery},
    {u"EXISTS", kInnerQuery},
    {u"XOR", u"XOR"},
    {u"EQV", u"EQV"},
    {u"IMP", u"IMP"},
    {u"LIMIT", u"LIMIT (TOP says how many rows)"},
};

// Statements of other kinds.
constexpr TextView kOtherStatements[] = {
    u"ALTER", u"BEGIN",  u"COMMIT",     u"CREATE",    u"DROP",     u"EXEC",     u"EXECUTE",
    u"GRANT", u"REVOKE", u"PARAMETERS", u"PROCEDURE", u"ROLLBACK", u"TRANSFORM"};
// In front of a query in parentheses.
constexpr TextView kAsksQuery[] = {u"EXISTS", u"ANY", u"ALL", u"SOME"};

bool IsOneOf(TextView word, std::span<const TextView> words) {
  return std::ranges::any_of(words,
                             [word](TextView known) { return EqualsIgnoringCase(word, known); });
}

Text NotSupported(TextView what) {
  return Text(what) + u" is not supported.";
}

struct Operator {
  TextView symbol;
  Comparison comparison;
};
constexpr Operator kOperators[] = {
    {u"=", Comparison::Equal},   {u"<>", Comparison::NotEqual},
    {u"<", Comparison::Less},    {u"<=", Comparison::LessOrEqual},
    {u">", Comparison::Greater}, {u">=", Comparison::GreaterOrEqual},
};

// Words that compare, with NOT in front of them or not.
constexpr TextView kComparingWords[] = {u"IS", u"IN", u"BETWEEN", u"LIKE"};

// Each clause sets the error that everything unexpected in it raises.
class Parser {
 public:
  explicit Parser(TextView text) : text_(text), tokens_(Tokenize(text)) {}

  Statement Parse() {
    Statement statement = ParseAny();
    TakeSymbol(u";");
    error_ = kTrailingError;
    if (Current().kind != TokenKind::End) Fail();
    return statement;
  }

 private:
  Statement ParseAny() {
    if (TakeWord(u"SELECT")) return ParseSelect();
    if (TakeWord(u"UPDATE")) return ParseUpdate();
    if (TakeWord(u"INSERT")) return ParseInsert();
    if (TakeWord(u"DELETE")) return ParseDelete();
    if (Current().kind == TokenKind::Word && IsOneOf(Current().text, kOtherStatements))
      Refuse(NotSupported(UpperCase(Current().text)));
    Fail();
  }

  Select ParseSelect() {
    error_ = kSelectError;
    Select select;
    if (TakePredicate(u"DISTINCTROW")) Refuse(NotSupported(u"DISTINCTROW"));
    select.distinct = TakePredicate(u"DISTINCT");
    if (!select.distinct) TakePredicate(u"ALL");
    select.top = ParseTop();
    do {
      select.items.push_back(ParseSelectItem());
      RefuseOwnName();
    } while (TakeSymbol(u","));
    if (IsWord(u"INTO")) Refuse(NotSupported(u"Making a table (SELECT ... INTO)"));
    if (IsEnd()) Refuse(NotSupported(u"A SELECT without FROM"));
    select.table = ParseFrom();
    select.where = ParseWhere();
    if (!TakeWord(u"ORDER")) return select;
    error_ = kOrderError;
    RequireWord(u"BY");
    do {
      if (Current().kind == TokenKind::Number)
        Refuse(NotSupported(u"A column by its number in ORDER BY"));
      OrderItem item{ParseName()};
      item.descending = TakeWord(u"DESC");
      if (!item.descending) TakeWord(u"ASC");
      select.order.push_back(std::move(item));
    } while (TakeSymbol(u","));
    return select;
  }

  // A word in front of the items, which is a column's name where no item follows it.
  bool TakePredicate(TextView word) {
    const Token& next = Ahead(1);
    const bool ends = next.kind == TokenKind::End || EqualsIgnoringCase(next.text, u"FROM");
    const bool item = next.kind != TokenKind::Symbol || next.text == u"*" || next.text == u"-" ||
                      next.text == u"+";
    return !ends && item && TakeWord(word);
  }

  std::optional<size_t> ParseTop() {
    if (Ahead(1).kind != TokenKind::Number || !TakeWord(u"TOP")) return std::nullopt;
    const Text& digits = Current().text;
    size_t count = 0;
    for (const char16_t digit : digits) {
      if (!IsDigit(digit) || digits.size() > kMaxTopDigits) Fail();
      count = count * 10 + static_cast<size_t>(digit - u'0');
    }
    if (count == 0) Fail();
    ++position_;
    if (IsWord(u"PERCENT")) Fail();
    return count;
  }

  SelectItem ParseSelectItem() {
    if (TakeSymbol(u"*")) return AllColumns{};
    if (IsWord(u"COUNT") && IsSymbol(u"(", 1) && IsSymbol(u"*", 2)) {
      position_ += 3;
      RequireSymbol(u")");
      return CountAll{};
    }
    if (IsName() && IsSymbol(u".", 1) && IsSymbol(u"*", 2)) {
      AllColumns all{TakeName()};
      position_ += 2;
      return all;
    }
    if (IsSymbol(u"(") && !IsInnerQuery()) Refuse(NotSupported(u"A column in parentheses"));
    return ParseOperand();
  }

  Update ParseUpdate() {
    error_ = kUpdateError;
    Update update;
    update.table = ParseTable();
    RequireWord(u"SET");
    do {
      Name target = ParseName();
      RequireSymbol(u"=");
      update.items.push_back({std::move(target), ParseOperand()});
    } while (TakeSymbol(u","));
    update.where = ParseWhere();
    return update;
  }

  Insert ParseInsert() {
    error_ = kInsertError;
    Insert insert;
    RequireWord(u"INTO");
    insert.table = TakeName();
    if (TakeSymbol(u"(")) {
      do {
        insert.columns.push_back(TakeName());
      } while (TakeSymbol(u","));
      RequireSymbol(u")");
    }
    RequireWord(u"VALUES");
    RequireSymbol(u"(");
    do {
      insert.values.push_back(ParseOperand());
    } while (TakeSymbol(u","));
    RequireSymbol(u")");
    if (IsSymbol(u",")) Refuse(NotSupported(u"More than one row in an INSERT INTO statement"));
    return insert;
  }

  Delete ParseDelete() {
    error_ = kDeleteError;
    if (!TakeSymbol(u"*") && IsName()) {
      TakeName();
      RequireSymbol(u".");
      RequireSymbol(u"*");
    }
    Delete statement;
    statement.table = ParseFrom();
    statement.where = ParseWhere();
    return statement;
  }

  Text ParseFrom() {
    RequireWord(u"FROM");
    error_ = kFromError;
    if (IsSymbol(u"(")) Refuse(NotSupported(u"A join or a query in place of a table"));
    return ParseTable();
  }

  Text ParseTable() {
    Text table = TakeName();
    if (IsSymbol(u",")) Refuse(NotSupported(kManyTables));
    RefuseOwnName();
    return table;
  }

  // One that stands behind a column or a table without AS.
  void RefuseOwnName() const {
    if (IsName() && KnownUnsupported() == nullptr) Refuse(NotSupported(kOwnName));
  }

  std::optional<Condition> ParseWhere() {
    if (!TakeWord(u"WHERE")) return std::nullopt;
    error_ = kWhereError;
    return ParseOr(0);
  }

  Condition ParseOr(int depth) {
    return ParseChain(ConditionKind::Or, u"OR", [&] { return ParseAnd(depth); });
  }
  Condition ParseAnd(int depth) {
    return ParseChain(ConditionKind::And, u"AND", [&] { return ParseNot(depth); });
  }

  template <typename ParsePart>
  Condition ParseChain(ConditionKind kind, TextView word, ParsePart parse_part) {
    Condition first = parse_part();
    if (!IsWord(word)) return first;
    Condition chain;
    chain.kind = kind;
    chain.parts.push_back(std::move(first));
    while (TakeWord(word)) chain.parts.push_back(parse_part());
    return chain;
  }

  Condition ParseNot(int depth) {
    if (depth > kMaxConditionDepth) RaiseSyntaxError(kTooComplex);
    if (TakeWord(u"NOT")) return Negated(ParseNot(depth + 1));
    if (IsOperandInParentheses() || !TakeSymbol(u"(")) return ParseComparison();
    Condition condition = ParseOr(depth + 1);
    RequireSymbol(u")");
    return condition;
  }

  // "(" that belongs to the left side of a comparison, as what compares follows its ")".
  bool IsOperandInParentheses() const {
    if (!IsSymbol(u"(")) return false;
    size_t ahead = 0;
    int open = 0;
    do {
      if (IsSymbol(u"(", ahead)) ++open;
      if (IsSymbol(u")", ahead)) --open;
      ++ahead;
    } while (open > 0 && Ahead(ahead).kind != TokenKind::End);
    const Token& next = Ahead(ahead);
    const bool negated = IsWord(u"NOT", ahead);
    if (next.kind == TokenKind::Word)
      return IsOneOf(Ahead(ahead + (negated ? 1 : 0)).text, kComparingWords);
    return next.kind == TokenKind::Symbol && ComparisonOf(next) != nullptr;
  }

  static const Operator* ComparisonOf(const Token& token) {
    const auto found = std::ranges::find_if(
        kOperators, [&](const Operator& entry) { return token.text == entry.symbol; });
    const bool compares = token.kind == TokenKind::Symbol && found != std::end(kOperators);
    return compares ? &*found : nullptr;
  }

  bool IsEnd() const { return Current().kind == TokenKind::End || IsSymbol(u";"); }
  // What stood before it is a whole condition.
  bool EndsCondition() const {
    return IsEnd() || IsSymbol(u")") || IsWord(u"AND") || IsWord(u"OR") || IsWord(u"ORDER");
  }

  Condition ParseComparison() {
    Condition condition;
    condition.left = ParseOperand();
    // A value as a condition: true unless it is 0.
    if (EndsCondition())
      return Compared(std::move(condition.left), Comparison::NotEqual,
                      Literal{LiteralKind::Number, u"0"});
    if (TakeWord(u"IS")) {
      condition.kind = ConditionKind::IsNull;
      const bool negated = TakeWord(u"NOT");
      RequireWord(u"NULL");
      return NegatedIf(negated, std::move(condition));
    }
    const bool negated = TakeWord(u"NOT");
    if (TakeWord(u"IN")) return NegatedIf(negated, ParseList(condition.left));
    if (TakeWord(u"BETWEEN")) return NegatedIf(negated, ParseRange(condition.left));
    if (TakeWord(u"LIKE")) {
      condition.comparison = Comparison::Like;
      condition.right = ParseOperand();
      return NegatedIf(negated, std::move(condition));
    }
    const Operator* const found = ComparisonOf(Current());
    if (negated || found == nullptr) Fail();
    ++position_;
    condition.comparison = found->comparison;
    condition.right = ParseOperand();
    return condition;
  }

  // IN: equal to one of them.
  Condition ParseList(const Operand& left) {
    Condition any;
    any.kind = ConditionKind::Or;
    RequireSymbol(u"(");
    do {
      any.parts.push_back(Compared(left, Comparison::Equal, ParseOperand()));
    } while (TakeSymbol(u","));
    RequireSymbol(u")");
    return any;
  }

  // BETWEEN: from one bound to the other, whichever is the lower.
  Condition ParseRange(const Operand& left) {
    const Operand first = ParseOperand();
    RequireWord(u"AND");
    const Operand second = ParseOperand();
    Condition either;
    either.kind = ConditionKind::Or;
    either.parts = {Within(left, first, second), Within(left, second, first)};
    return either;
  }

  static Condition Within(const Operand& left, const Operand& lower, const Operand& upper) {
    Condition both;
    both.kind = ConditionKind::And;
    both.parts = {Compared(left, Comparison::GreaterOrEqual, lower),
                  Compared(left, Comparison::LessOrEqual, upper)};
    return both;
  }

  static Condition Compared(Operand left, Comparison comparison, Operand right) {
    Condition condition;
    condition.comparison = comparison;
    condition.left = std::move(left);
    condition.right = std::move(right);
    return condition;
  }

  static Condition NegatedIf(bool negated, Condition condition) {
    return negated ? Negated(std::move(condition)) : condition;
  }

  static Condition Negated(Condition condition) {
    Condition negation;
    negation.kind = ConditionKind::Not;
    negation.parts.push_back(std::move(condition));
    return negation;
  }

  bool IsInnerQuery() const { return IsSymbol(u"(") && IsWord(u"SELECT", 1); }

  Operand ParseOperand(int depth = 0) {
    if (IsInnerQuery()) Refuse(NotSupported(kInnerQuery));
    if (depth > kMaxConditionDepth) RaiseSyntaxError(kTooComplex);
    if (TakeSymbol(u"(")) {
      Operand inner = ParseOperand(depth + 1);
      if (ComparisonOf(Current()) != nullptr)
        Refuse(NotSupported(u"A condition in place of a value"));
      RequireSymbol(u")");
      return inner;
    }
    const Token& token = Current();
    switch (token.kind) {
      case TokenKind::Text:
        return TakeLiteral(LiteralKind::Text);
      case TokenKind::Number:
        return TakeLiteral(LiteralKind::Number);
      case TokenKind::Date:
        return TakeLiteral(LiteralKind::Date);
      case TokenKind::Symbol:
        return ParseSignedNumber();
      default:
        break;
    }
    if (TakeWord(u"NULL")) return Literal{};
    if (TakeWord(u"TRUE")) return Literal{LiteralKind::Boolean, u"-1"};
    if (TakeWord(u"FALSE")) return Literal{LiteralKind::Boolean, u"0"};
    return ParseName();
  }

  Literal ParseSignedNumber() {
    const bool sign = IsSymbol(u"-") || IsSymbol(u"+");
    const TokenKind next = Ahead(1).kind;
    if (!sign || next == TokenKind::End) Fail();
    if (next != TokenKind::Number) Refuse(NotSupported(kArithmetic));
    const bool negative = TakeSymbol(u"-");
    if (!negative) RequireSymbol(u"+");
    Literal literal = TakeLiteral(LiteralKind::Number);
    if (negative) literal.text.insert(0, u"-");
    return literal;
  }

  Literal TakeLiteral(LiteralKind kind) { return {kind, tokens_[position_++].text}; }

  Name ParseName() {
    const bool asks_query = IsSymbol(u"(", 1) && IsOneOf(Current().text, kAsksQuery);
    if (asks_query && Current().kind == TokenKind::Word) Refuse(NotSupported(kInnerQuery));
    Name name{{}, TakeName()};
    if (IsSymbol(u"(")) Refuse(NotSupported(u"The function " + name.column));
    if (!TakeSymbol(u".")) return name;
    name.table = std::exchange(name.column, TakeName());
    return name;
  }

  bool IsName() const {
    const Token& token = Current();
    if (token.kind == TokenKind::Quoted) return true;
    return token.kind == TokenKind::Word && !IsOneOf(token.text, kReserved);
  }
  Text TakeName() {
    if (!IsName()) Fail();
    return tokens_[position_++].text;
  }

  const Token& Current() const { return tokens_[position_]; }
  const Token& Ahead(size_t count) const {
    return tokens_[std::min(position_ + count, tokens_.size() - 1)];
  }

  bool IsWord(TextView word, size_t ahead = 0) const {
    return Ahead(ahead).kind == TokenKind::Word && EqualsIgnoringCase(Ahead(ahead).text, word);
  }
  bool TakeWord(TextView word) {
    if (!IsWord(word)) return false;
    ++position_;
    return true;
  }
  void RequireWord(TextView word) {
    if (!TakeWord(word)) Fail();
  }

  bool IsSymbol(TextView symbol, size_t ahead = 0) const {
    return Ahead(ahead).kind == TokenKind::Symbol && Ahead(ahead).text == symbol;
  }
  bool TakeSymbol(TextView symbol) {
    if (!IsSymbol(symbol)) return false;
    ++position_;
    return true;
  }
  void RequireSymbol(TextView symbol) {
    if (!TakeSymbol(symbol)) Fail();
  }

  // What the current word or sign begins, where that is known.
  const Unsupported* KnownUnsupported() const {
    const Token& token = Current();
    const bool written = token.kind == TokenKind::Word || token.kind == TokenKind::Symbol;
    const auto known = std::ranges::find_if(kUnsupported, [&](const Unsupported& entry) {
      return EqualsIgnoringCase(token.text, entry.begins);
    });
    return written && known != std::end(kUnsupported) ? &*known : nullptr;
  }

  // What is wrong with the current word or sign: that it is not known here, or out of place.
  Text Objection() const {
    const bool begins = position_ == 0 || tokens_[position_ - 1].text == u";";
    const Unsupported* const known = KnownUnsupported();
    return begins || known == nullptr ? Text(error_) : NotSupported(known->what);
  }

  [[noreturn]] void Fail() const { Refuse(Objection()); }
  [[noreturn]] void Refuse(Text why) const {
    const Token& token = Current();
    throw SyntaxError(std::move(why), Text(text_.substr(token.position, token.size)),
                      token.position);
  }

  TextView text_;
  std::vector<Token> tokens_;
  size_t position_ = 0;
  TextView error_ = kUnknownStatement;
};

}  // namespace

Statement ParseStatement(TextView text) {
  if (text.size() > kMaxStatementLength) RaiseSyntaxError(kTooComplex);
  return Parser(text).Parse();
}

}  // namespace rdv::jet::sql
