// Ast: the tree of a parsed script. A script is a list of statements (assignment, print, dump,
// or an expression on its own); an expression is a string, a number, a variable or a call. A call
// names a script function (resolved through the module's definition text) or, written
// `call <entry>(...)`, an exported entry that is called directly. Every node keeps the place
// where it starts, and a statement its text as written. The tree holds no values of the host and
// resolves no names.
//
// Each kind of statement and of expression is one alternative of a std::variant, and every
// pass over the tree (the checker, the interpreter) takes them apart with std::visit and an
// Overloaded visitor that names each kind in a handler of its own. So a kind added to a
// variant does not compile until every pass handles it: give no handler an `auto` parameter,
// which would take the new kind in silently.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "minihost/script/ScriptError.h"

namespace minihost {

// A visitor made of one callable per kind: std::visit(Overloaded{handlers...}, node).
template <typename... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};
// NOTE: C++20 deduces the handlers by itself, but clang (and so clang-tidy) only from 17 on.
template <typename... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;

struct Expression;

struct StringLiteral {
    std::string bytes;  // escapes decoded
};

struct NumberLiteral {
    double value = 0.0;
};

struct VariableRef {
    std::string name;
};

struct Call {
    std::string name;     // a script name such as "Binary.Slice", or an entry name when direct
    bool direct = false;  // written `call <entry>(...)`
    std::vector<Expression> arguments;
};

struct Expression {
    SourcePosition position;
    std::variant<StringLiteral, NumberLiteral, VariableRef, Call> node;
};

struct Assignment {
    std::string name;
    Expression value;
};

struct Print {
    Expression value;
};

// `dump value[, offset[, count]]`: range holds the offset and the count that were written.
struct Dump {
    Expression value;
    std::vector<Expression> range;
};

struct ExpressionStatement {
    Expression value;
};

struct Statement {
    SourcePosition position;
    std::variant<Assignment, Print, Dump, ExpressionStatement> node;
    std::string text;  // as written, from its first byte to its last (line ends included)
    int lastLine = 1;  // the line where it ends
};

using Program = std::vector<Statement>;

}  // namespace minihost
