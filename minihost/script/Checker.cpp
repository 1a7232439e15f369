#include "minihost/script/Checker.h"

#include <variant>

namespace minihost {

namespace {

class Checker {
public:
    Checker(FunctionTable const& table, std::set<std::string> const& known)
        : mTable(table), mVariables(known) {}

    void CheckStatement(Statement const& statement) {
        std::visit(Overloaded{
                       [this](Assignment const& assignment) {
                           // The value first: "x = x" uses x before it is assigned.
                           CheckExpression(assignment.value);
                           mVariables.insert(assignment.name);
                       },
                       [this](Print const& print) { CheckExpression(print.value); },
                       [this](ExpressionStatement const& alone) { CheckExpression(alone.value); },
                   },
                   statement.node);
    }

private:
    void CheckExpression(Expression const& expression) {
        SourcePosition const position = expression.position;
        std::visit(Overloaded{
                       [](StringLiteral const& /*literal*/) {},
                       [](NumberLiteral const& /*literal*/) {},
                       [&](VariableRef const& variable) { CheckVariable(variable, position); },
                       [&](Call const& call) { CheckCall(call, position); },
                   },
                   expression.node);
    }

    void CheckVariable(VariableRef const& variable, SourcePosition position) const {
        if (mVariables.count(variable.name) == 0) {
            throw ScriptError(position, "unknown variable '" + variable.name + "'");
        }
    }

    // The name first, then the arguments: faults are met in the order of the text.
    void CheckCall(Call const& call, SourcePosition position) {
        if (call.direct) {
            CheckEntry(call, position);
        } else {
            CheckFunction(call, position);
        }
        for (Expression const& argument : call.arguments) {
            CheckExpression(argument);
        }
    }

    void CheckFunction(Call const& call, SourcePosition position) const {
        std::string error;
        if (mTable.Candidates(call.name, call.arguments.size(), error).empty()) {
            throw ScriptError(position, error);
        }
    }

    void CheckEntry(Call const& call, SourcePosition position) const {
        if (mTable.FindEntry(call.name) != nullptr) {
            return;
        }
        std::string list;
        for (Signature const& signature : mTable.signatures()) {
            list += "\n  " + signature.entry;
        }
        throw ScriptError(position, "unknown entry '" + call.name + "'; the entries are:" + list);
    }

    FunctionTable const& mTable;
    std::set<std::string> mVariables;
};

}  // namespace

void CheckProgram(Program const& program, FunctionTable const& table,
                  std::set<std::string> const& known) {
    Checker checker(table, known);
    for (Statement const& statement : program) {
        checker.CheckStatement(statement);
    }
}

}  // namespace minihost
