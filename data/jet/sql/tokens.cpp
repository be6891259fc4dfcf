#include "data/jet/sql/tokens.h"

#include <utility>

#include "data/jet/sql/syntax_error.h"

namespace rdv::jet::sql {
namespace {

bool IsBlank(char16_t unit) {
  return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

bool BeginsName(char16_t unit) {
  return unit == u'_' || (unit >= u'A' && unit <= u'Z') || (unit >= u'a' && unit <= u'z') ||
         unit >= 0x80;
}

bool ContinuesName(char16_t unit) {
  return BeginsName(unit) || IsDigit(unit) || unit == u'$';
}

class Tokenizer {
 public:
  explicit Tokenizer(TextView statement) : statement_(statement) {}

  Token Next() {
    while (IsBlank(Peek())) ++position_;
    start_ = position_;
    Token token = AtEnd() ? Token() : Take();
    token.position = start_;
    token.size = position_ - start_;
    return token;
  }

 private:
  Token Take() {
    const char16_t unit = Peek();
    if (BeginsName(unit)) return {TokenKind::Word, TakeWhile(ContinuesName)};
    if (IsDigit(unit) || (unit == u'.' && IsDigit(Peek(1)))) return {TokenKind::Number, Number()};
    switch (unit) {
      case u'`':
        return {TokenKind::Quoted, Enclosed(u'`', u"Syntax error in query expression.")};
      case u'[':
        return {TokenKind::Quoted, Enclosed(u']', u"Syntax error in query expression.")};
      case u'\'':
      case u'"':
        return {TokenKind::Text, Enclosed(unit, u"Syntax error in string in query expression.")};
      case u'#':
        return {TokenKind::Date, Enclosed(u'#', u"Syntax error in date in query expression.")};
      default:
        return {TokenKind::Symbol, Symbol()};
    }
  }

  bool AtEnd() const { return position_ >= statement_.size(); }

  char16_t Peek(size_t ahead = 0) const {
    return position_ + ahead < statement_.size() ? statement_[position_ + ahead] : u'\0';
  }

  template <typename Predicate>
  Text TakeWhile(Predicate belongs) {
    const size_t start = position_;
    while (!AtEnd() && belongs(Peek())) ++position_;
    return Text(statement_.substr(start, position_ - start));
  }

  Text Number() {
    Text number = TakeWhile(IsDigit);
    if (Peek() == u'.') number += statement_[position_++];
    number += TakeWhile(IsDigit);
    if (Peek() != u'e' && Peek() != u'E') return number;
    const size_t sign = Peek(1) == u'+' || Peek(1) == u'-' ? 1 : 0;
    if (!IsDigit(Peek(1 + sign))) return number;
    number += statement_.substr(position_, 1 + sign);
    position_ += 1 + sign;
    return number += TakeWhile(IsDigit);
  }

  Text Enclosed(char16_t closing, TextView error) {
    Text content;
    for (++position_; !AtEnd(); ++position_) {
      if (Peek() == closing) {
        ++position_;
        if (Peek() != closing) return content;
      }
      content += Peek();
    }
    Fail(error);
  }

  Text Symbol() {
    constexpr TextView kPairs[] = {u"<>", u"<=", u">="};
    constexpr TextView kSingles = u"=<>,.*();-+/\\^&";
    for (const TextView pair : kPairs) {
      if (statement_.substr(position_, 2) != pair) continue;
      position_ += 2;
      return Text(pair);
    }
    if (statement_.substr(position_, 2) == u"!=") {
      position_ += 2;
      Fail(u"The sign != is not supported: unequal is <>.");
    }
    if (Peek() == u'&' && BeginsNumberOfAnotherBase()) {
      position_ += 2;
      TakeWhile(ContinuesName);
      Fail(u"Numbers in hexadecimal or octal (&H, &O) are not supported.");
    }
    if (kSingles.find(Peek()) == TextView::npos) {
      ++position_;
      Fail(u"Syntax error in query expression.");
    }
    return Text(1, statement_[position_++]);
  }

  bool BeginsNumberOfAnotherBase() const {
    const char16_t base = UpperCase(Peek(1));
    const char16_t digit = UpperCase(Peek(2));
    const bool in_16 = IsDigit(digit) || (digit >= u'A' && digit <= u'F');
    return (base == u'H' && in_16) || (base == u'O' && digit >= u'0' && digit <= u'7');
  }

  // What has been read of the token that begins at start_ makes none.
  [[noreturn]] void Fail(TextView error) const {
    throw SyntaxError(Text(error), Text(statement_.substr(start_, position_ - start_)), start_);
  }

  TextView statement_;
  size_t start_ = 0;
  size_t position_ = 0;
};

}  // namespace

std::vector<Token> Tokenize(TextView statement) {
  Tokenizer tokenizer(statement);
  std::vector<Token> tokens;
  do {
    tokens.push_back(tokenizer.Next());
  } while (tokens.back().kind != TokenKind::End);
  return tokens;
}

}  // namespace rdv::jet::sql
