#include "minihost/script/Checker.h"

#include <variant>

#include "minihost/script/PromptCommands.h"
#include "minihost/script/Suggestions.h"

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
                       [this](Dump const& dump) {
                           CheckExpression(dump.value);
                           for (Expression const& bound : dump.range) {
                               CheckExpression(bound);
                           }
                       },
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
        if (mVariables.count(variable.name) != 0) {
            return;
        }
        std::string message = "unknown variable '" + variable.name + "'";
        if (IsPromptCommandName(variable.name)) {
            message +=
                "; help, quit and exit are commands of the interactive prompt, alone on "
                "a line";
        } else {
            std::vector<std::string> const known(mVariables.begin(), mVariables.end());
            std::string const question = DidYouMean(ClosestNames(variable.name, known));
            message += question.empty() ? "" : "; " + question;
        }
        throw ScriptError(position, message);
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
        std::vector<std::string> entries;
        std::string list;
        for (Signature const& signature : mTable.signatures()) {
            entries.push_back(signature.entry);
            list += "\n  " + signature.entry;
        }
        std::string const question = DidYouMean(ClosestNames(call.name, entries));
        throw ScriptError(position, "unknown entry '" + call.name + "'; " +
                                        (question.empty() ? "the entries are:" + list : question));
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
