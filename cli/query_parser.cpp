// Tokenizer and recursive-descent parser of the search query language.
#include "query_parser.h"

#include <cctype>
#include <utility>

#include "kurvo.h"

namespace kurvo_cli {

WordCharacters defaultWordCharacters() {
  WordCharacters chars{};
  for (int c = 0; c < 256; ++c) {
    bool ascii = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    bool latin = c >= 0xC0 && c != 0xD7 && c != 0xF7;
    chars[c] = ascii || latin;
  }
  return chars;
}

std::string foldCase(const std::string &text) {
  std::string out = text;
  kFoldCase(out.data());
  return out;
}

namespace {
constexpr const char *kWildcards = "*?";
}  // namespace

bool hasWildcard(const std::string &term) { return term.find_first_of(kWildcards) != std::string::npos; }

std::string literalPrefix(const std::string &term) { return term.substr(0, term.find_first_of(kWildcards)); }

namespace {

enum class TokenKind { Term, And, Or, Open, Close, Exclude, Near, End };

struct Token {
  Token(TokenKind k, std::string t) : kind(k), text(std::move(t)) {}
  TokenKind kind;
  std::string text;
  int distance = -1;
  // A term written as one but cut by the indexer: "e-mail" has e and mail.
  std::vector<std::string> parts;
};

bool isOperatorByte(unsigned char c) {
  return c == '(' || c == ')' || c == '|' || c == '&' || c == '<' || std::isspace(c);
}

std::vector<Token> tokenize(const std::string &text, const WordCharacters &wordChars) {
  std::vector<Token> tokens;
  auto isTermByte = [&](unsigned char c) { return wordChars[c] || c == '*' || c == '?'; };
  // '+' and '-' exclude only where a new item may start, so that "e-mail"
  // reads as two words rather than as an exclusion.
  bool itemStart = true;
  size_t i = 0;
  while (i < text.size()) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    if (isTermByte(c)) {
      Token term{TokenKind::Term, ""};
      for (;;) {
        size_t start = i;
        while (i < text.size() && isTermByte(static_cast<unsigned char>(text[i]))) ++i;
        term.parts.push_back(foldCase(text.substr(start, i - start)));
        // Joined by bytes that are neither word nor operator ("-", "_", "'"):
        // the next run belongs to the same written term.
        size_t joint = i;
        while (joint < text.size() && !isTermByte(static_cast<unsigned char>(text[joint])) &&
               !isOperatorByte(static_cast<unsigned char>(text[joint])))
          ++joint;
        if (joint == i || joint == text.size() || !isTermByte(static_cast<unsigned char>(text[joint]))) break;
        i = joint;
      }
      term.text = term.parts.front();
      for (size_t p = 1; p < term.parts.size(); ++p) term.text += "-" + term.parts[p];
      tokens.push_back(term);
      itemStart = false;
      continue;
    }
    ++i;
    switch (c) {
      case '(':
        tokens.push_back({TokenKind::Open, "("});
        itemStart = true;
        break;
      case ')':
        tokens.push_back({TokenKind::Close, ")"});
        itemStart = false;
        break;
      case '|':
        tokens.push_back({TokenKind::Or, "|"});
        itemStart = true;
        break;
      case '&':
        tokens.push_back({TokenKind::And, "&"});
        itemStart = true;
        break;
      case '<': {
        Token near{TokenKind::Near, "<"};
        while (i < text.size() && text[i] == ' ') ++i;
        size_t start = i;
        while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i]))) ++i;
        if (i > start) {
          std::string digits = text.substr(start, i - start);
          if (digits.size() > 6) throw QueryError("the distance after '<' is too large: " + digits);
          near.distance = std::stoi(digits);
          near.text += digits;
        }
        tokens.push_back(near);
        itemStart = true;
        break;
      }
      case '-':
        if (itemStart) tokens.push_back({TokenKind::Exclude, "-"});
        break;
      case '+':  // a required word, as every word is
        break;
      default:
        itemStart = itemStart || std::isspace(c) != 0;
        break;
    }
    if (std::isspace(c)) itemStart = true;
  }
  tokens.push_back({TokenKind::End, ""});
  return tokens;
}

class Parser {
 public:
  explicit Parser(std::vector<Token> tokens) : m_tokens(std::move(tokens)) {}

  QueryNode parse() {
    if (peek().kind == TokenKind::End) throw QueryError("the query is empty");
    QueryNode root = parseOr();
    if (peek().kind == TokenKind::Close) throw QueryError("')' without a matching '('");
    if (peek().kind != TokenKind::End) throw QueryError("unexpected '" + peek().text + "'");
    return root;
  }

 private:
  const Token &peek() const { return m_tokens[m_pos]; }
  Token next() { return m_tokens[m_pos++]; }

  QueryNode parseOr() {
    QueryNode first = parseAnd();
    if (peek().kind != TokenKind::Or) return first;
    QueryNode node;
    node.kind = QueryKind::Or;
    node.children.push_back(std::move(first));
    while (peek().kind == TokenKind::Or) {
      next();
      node.children.push_back(parseAnd());
    }
    return node;
  }

  QueryNode parseAnd() {
    QueryNode node;
    node.kind = QueryKind::And;
    bool positive = false;
    for (;;) {
      while (peek().kind == TokenKind::And) next();
      TokenKind k = peek().kind;
      if (k == TokenKind::End || k == TokenKind::Close || k == TokenKind::Or) break;
      QueryNode item = parseUnary();
      if (item.kind != QueryKind::Exclude) positive = true;
      node.children.push_back(std::move(item));
    }
    if (node.children.empty()) {
      if (peek().kind == TokenKind::Or) throw QueryError("'|' needs a word on each side");
      if (peek().kind == TokenKind::Close) throw QueryError("'()' holds no word");
      throw QueryError("the query ends where a word was expected");
    }
    if (!positive) throw QueryError("an excluded word needs another word to exclude it from");
    if (node.children.size() == 1) return std::move(node.children.front());
    return node;
  }

  QueryNode parseUnary() {
    if (peek().kind == TokenKind::Exclude) {
      next();
      QueryNode node;
      node.kind = QueryKind::Exclude;
      node.children.push_back(parsePrimary("after '-'"));
      return node;
    }
    QueryNode first = parsePrimary("here");
    if (peek().kind != TokenKind::Near) return first;
    QueryNode node;
    node.kind = QueryKind::Near;
    node.children.push_back(std::move(first));
    while (peek().kind == TokenKind::Near) {
      node.distances.push_back(next().distance);
      node.children.push_back(parsePrimary("after '<'"));
    }
    for (const QueryNode &child : node.children) {
      if (child.kind != QueryKind::Term) throw QueryError("'<' needs a single word on each side");
    }
    return node;
  }

  QueryNode parsePrimary(const char *where) {
    Token t = next();
    if (t.kind == TokenKind::Term) {
      QueryNode node;
      node.text = t.text;
      if (t.parts.size() < 2) return node;
      node.kind = QueryKind::Near;
      node.phrase = true;
      for (const std::string &part : t.parts) {
        QueryNode word;
        word.text = part;
        node.children.push_back(word);
      }
      node.distances.assign(t.parts.size() - 1, 0);
      return node;
    }
    if (t.kind == TokenKind::Open) {
      QueryNode inner = parseOr();
      if (next().kind != TokenKind::Close) throw QueryError("'(' without a matching ')'");
      return inner;
    }
    if (t.kind == TokenKind::End) throw QueryError(std::string("a word is missing ") + where);
    throw QueryError("unexpected '" + t.text + "' " + where);
  }

  std::vector<Token> m_tokens;
  size_t m_pos = 0;
};

void collectPositive(const QueryNode &node, std::vector<std::string> &out) {
  switch (node.kind) {
    case QueryKind::Term:
      out.push_back(node.text);
      break;
    case QueryKind::Exclude:
      break;
    default:
      for (const QueryNode &child : node.children) collectPositive(child, out);
  }
}

}  // namespace

QueryNode parseQuery(const std::string &text, const WordCharacters &wordChars) {
  return Parser(tokenize(text, wordChars)).parse();
}

std::string viewerQuery(const QueryNode &node) {
  std::string out;
  switch (node.kind) {
    case QueryKind::Term:
      return node.text;
    case QueryKind::Exclude: {
      const QueryNode &inner = node.children.front();
      if (inner.kind == QueryKind::Term) return "+" + inner.text;
      return "+(" + viewerQuery(inner) + ")";
    }
    case QueryKind::Near:
      for (size_t i = 0; i < node.children.size(); ++i) {
        if (i > 0) {
          const int distance = node.distances[i - 1];
          const std::string digits = distance >= 0 ? std::to_string(distance) : "";
          const bool readable = distance != 0 && digits.find('9') == std::string::npos;
          out += readable ? " <" + digits + " " : " ";
        }
        out += node.children[i].text;
      }
      return out;
    case QueryKind::And:
    case QueryKind::Or:
      for (size_t i = 0; i < node.children.size(); ++i) {
        if (i > 0) out += node.kind == QueryKind::And ? " " : " | ";
        const QueryNode &child = node.children[i];
        bool group = child.kind == QueryKind::Or || (child.kind == QueryKind::And && node.kind == QueryKind::And);
        out += group ? "(" + viewerQuery(child) + ")" : viewerQuery(child);
      }
      return out;
  }
  return out;
}

void dropUnindexedParts(QueryNode &node, int minLength) {
  for (QueryNode &child : node.children) dropUnindexedParts(child, minLength);
  if (!node.phrase) return;
  for (size_t i = 0; i < node.children.size() && node.children.size() > 1;) {
    const std::string &text = node.children[i].text;
    if (hasWildcard(text) || static_cast<int>(text.size()) >= minLength) {
      ++i;
      continue;
    }
    node.children.erase(node.children.begin() + static_cast<long>(i));
    if (i == 0) {
      node.distances.erase(node.distances.begin());
    } else if (i == node.distances.size()) {
      node.distances.pop_back();
    } else {
      node.distances[i - 1] += node.distances[i] + 1;
      node.distances.erase(node.distances.begin() + static_cast<long>(i));
    }
  }
  if (node.children.size() == 1) {
    QueryNode only = node.children.front();
    node = only;
  }
}

std::vector<std::string> positiveTerms(const QueryNode &node) {
  std::vector<std::string> out;
  collectPositive(node, out);
  return out;
}

}  // namespace kurvo_cli
