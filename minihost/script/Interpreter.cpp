#include "minihost/script/Interpreter.h"

#include <utility>
#include <variant>

#include "minihost/script/Checker.h"
#include "minihost/script/Parser.h"
#include "minihost/script/StatusWords.h"
#include "minihost/script/ValuePrinter.h"
#include "strings/Escape.h"

namespace minihost {

namespace {

// Thrown to end a strict run after its first report has been printed.
struct StrictStop {};

// A text from the module, with its non-printable bytes made visible.
std::string Visible(std::string_view text) {
    std::string out;
    Tavrel::EscapeNonPrint(text, out);
    return out;
}

std::string ReportText(ErrorReport const& report) {
    return "report from " + Visible(report.module) + ": " + Visible(report.error) + ": " +
           Visible(report.reason);
}

std::string TypeList(std::vector<Variant> const& arguments) {
    std::string text = "(";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        std::string_view const word = TypeWord(arguments[i].type());
        text += (i == 0 ? "" : ",");
        text += word.empty() ? "type " + std::to_string(arguments[i].type()) : std::string(word);
    }
    return text + ")";
}

}  // namespace

Interpreter::Interpreter(LoadedModule& module, FunctionTable const& table, Context& context,
                         std::ostream& out, std::ostream& err, InterpreterSettings settings)
    : mModule(module), mTable(table), mContext(context), mOut(out), mErr(err), mSettings(settings) {
    mContext.SetErrorHandler([this](ErrorReport const& report) { mPending.push_back(report); });
}

Interpreter::~Interpreter() { mContext.SetErrorHandler({}); }

std::set<std::string> Interpreter::VariableNames() const {
    std::set<std::string> names;
    for (auto const& entry : mVariables) {
        names.insert(entry.first);
    }
    return names;
}

RunStatus Interpreter::Run(std::string_view source, std::string const& file, int firstLine) {
    mFile = file;
    mHadReports = false;
    try {
        Program const program = Parse(source, firstLine);
        CheckProgram(program, mTable, VariableNames());
        for (Statement const& statement : program) {
            Execute(statement);
            if (mContext.Interface_IsInterrupted()) {
                mOut.flush();
                mErr << FormatAt(mFile, statement.position, "interrupted") << '\n';
                return RunStatus::kReports;
            }
        }
    } catch (ScriptError const& error) {
        mOut.flush();
        mErr << error.Format(mFile) << '\n';
        return RunStatus::kFailed;
    } catch (StrictStop const&) {
        return RunStatus::kReports;
    }
    return mHadReports ? RunStatus::kReports : RunStatus::kClean;
}

void Interpreter::Execute(Statement const& statement) {
    std::visit(
        Overloaded{
            [this](Assignment const& assignment) {
                Variant value = Evaluate(assignment.value);
                mVariables.insert_or_assign(assignment.name, std::move(value));
            },
            [this](Print const& print) { mOut << FormatValue(Evaluate(print.value)) << '\n'; },
            [this](ExpressionStatement const& alone) {
                Variant const value = Evaluate(alone.value);
                if (mSettings.echo) {
                    mOut << FormatValue(value) << '\n';
                }
            },
        },
        statement.node);
}

Variant Interpreter::Evaluate(Expression const& expression) {
    SourcePosition const position = expression.position;
    return std::visit(
        Overloaded{
            [](StringLiteral const& text) { return Variant::String(text.bytes); },
            [](NumberLiteral const& number) { return Variant::Number(number.value); },
            // The checker has made sure that the variable exists.
            [this](VariableRef const& variable) { return mVariables.at(variable.name); },
            [&](Call const& call) { return EvaluateCall(call, position); },
        },
        expression.node);
}

Variant Interpreter::EvaluateCall(Call const& call, SourcePosition position) {
    std::vector<Variant> arguments;
    arguments.reserve(call.arguments.size());
    for (Expression const& argument : call.arguments) {
        arguments.push_back(Evaluate(argument));
    }
    Variant result;
    if (call.direct) {
        unsigned int const status = Invoke(call.name, arguments, result);
        mOut << call.name << ": status " << status << " (" << DescribeStatus(status) << ")\n";
        FlushReports(position);
        return result;
    }
    Signature const& signature = Resolve(call, arguments, position);
    unsigned int const status = Invoke(signature.entry, arguments, result);
    FlushReports(position);
    if (status != 0) {
        throw ScriptError(position, "binding failed for " + FormatSignature(signature) + ": " +
                                        DescribeStatus(status) + " (status " +
                                        std::to_string(status) + ")");
    }
    return result;
}

Signature const& Interpreter::Resolve(Call const& call, std::vector<Variant> const& arguments,
                                      SourcePosition position) const {
    std::string error;
    std::vector<Signature const*> const candidates =
        mTable.Candidates(call.name, arguments.size(), error);
    std::vector<std::string_view> words;
    words.reserve(arguments.size());
    for (Variant const& argument : arguments) {
        words.push_back(TypeWord(argument.type()));
    }
    Signature const* chosen = FunctionTable::Choose(candidates, words);
    if (chosen == nullptr) {
        std::string list = FunctionTable::ListSignatures(candidates);
        list.pop_back();
        throw ScriptError(position, "no form of '" + call.name + "' takes " + TypeList(arguments) +
                                        "; there are:\n" + list);
    }
    return *chosen;
}

unsigned int Interpreter::Invoke(std::string const& entry, std::vector<Variant>& arguments,
                                 Variant& result) {
    EntryFunction const function = mModule.Entry(entry);
    if (function == nullptr) {
        throw std::logic_error("entry '" + entry + "' is not exported");
    }
    std::vector<Tavrel::IVariant*> pointers;
    pointers.reserve(arguments.size());
    for (Variant& argument : arguments) {
        pointers.push_back(&argument);
    }
    return function(static_cast<int>(pointers.size()), pointers.empty() ? nullptr : pointers.data(),
                    &result, mModule.Info(), &mContext);
}

void Interpreter::FlushReports(SourcePosition position) {
    std::vector<ErrorReport> reports = std::move(mPending);
    mPending.clear();
    if (!reports.empty()) {
        // Keep what print showed so far in front of the reports when both streams meet.
        mOut.flush();
    }
    for (ErrorReport const& report : reports) {
        mErr << FormatAt(mFile, position, ReportText(report)) << '\n';
        mHadReports = true;
    }
    if (mSettings.strict && !reports.empty()) {
        throw StrictStop{};
    }
}

}  // namespace minihost
