#include "minihost/script/Interpreter.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "host/VariantType.h"
#include "minihost/script/Checker.h"
#include "minihost/script/HexDump.h"
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

std::string RefusalText(std::string const& path) {
    return "minihost: the sandbox refused '" + Visible(path) +
           "', which lies outside the directories that scripts may read; --allow DIR lets them "
           "read under DIR (--allow-all anywhere)";
}

std::vector<std::string> TypeNames(std::vector<Variant> const& arguments) {
    std::vector<std::string> names;
    names.reserve(arguments.size());
    for (Variant const& argument : arguments) {
        names.push_back(TypeName(argument.type()));
    }
    return names;
}

std::string TypeList(std::vector<Variant> const& arguments) {
    std::string text;
    for (std::string const& name : TypeNames(arguments)) {
        text += (text.empty() ? "" : ",") + name;
    }
    return "(" + text + ")";
}

// The lines of source, without their line ends.
std::vector<std::string_view> LinesOf(std::string_view source) {
    std::vector<std::string_view> lines;
    for (std::size_t start = 0; start <= source.size();) {
        std::size_t const end = std::min(source.find('\n', start), source.size());
        lines.push_back(source.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

bool IsBlankLine(std::string_view line) {
    return line.find_first_not_of(" \t\r") == std::string_view::npos;
}

bool IsCommentLine(std::string_view line) {
    std::size_t const first = line.find_first_not_of(" \t");
    return first != std::string_view::npos && line[first] == '#';
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
    mEchoedUpTo = firstLine - 1;
    try {
        Program const program = Parse(source, firstLine);
        CheckProgram(program, mTable, VariableNames());
        std::vector<std::string_view> const lines =
            mSettings.echo ? LinesOf(source) : std::vector<std::string_view>{};
        for (Statement const& statement : program) {
            if (mSettings.echo) {
                Echo(statement, lines, firstLine);
            }
            Execute(statement);
            if (mContext.Interface_IsInterrupted()) {
                mOut.flush();
                mErr << (mSettings.prompt ? "\n" : "")
                     << FormatAt(mFile, statement.position, "interrupted") << '\n';
                return RunStatus::kReports;
            }
        }
        if (mSettings.echo) {
            EchoComments(static_cast<int>(lines.size()) + firstLine, lines, firstLine);
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

void Interpreter::EchoComments(int before, std::vector<std::string_view> const& lines,
                               int firstLine) {
    for (int line = mEchoedUpTo + 1; line < before; ++line) {
        std::size_t const index = static_cast<std::size_t>(line - firstLine);
        if (index < lines.size() && IsCommentLine(lines[index])) {
            // A blank line in front of a comment stays, so that steps stand apart.
            bool const apart = line > mEchoedUpTo + 1 && IsBlankLine(lines[index - 1]);
            mOut << (apart ? "\n" : "") << lines[index] << '\n';
        }
    }
    mOut.flush();
}

void Interpreter::Echo(Statement const& statement, std::vector<std::string_view> const& lines,
                       int firstLine) {
    EchoComments(statement.position.line, lines, firstLine);
    mEchoedUpTo = statement.lastLine;
    mOut << mFile << ':' << statement.position.line << "> " << statement.text << std::endl;
}

void Interpreter::Execute(Statement const& statement) {
    std::visit(Overloaded{
                   [this](Assignment const& assignment) {
                       Variant value = Evaluate(assignment.value);
                       mVariables.insert_or_assign(assignment.name, std::move(value));
                   },
                   [this](Print const& print) {
                       mOut << FormatValue(Evaluate(print.value), mSettings.full) << '\n';
                   },
                   [this](Dump const& dump) { ExecuteDump(dump); },
                   [this](ExpressionStatement const& alone) {
                       Variant const value = Evaluate(alone.value);
                       if (mSettings.prompt) {
                           mOut << FormatValue(value, mSettings.full) << '\n';
                       }
                   },
               },
               statement.node);
}

std::array<unsigned long long, 2> Interpreter::DumpBounds(Dump const& dump) {
    std::array<unsigned long long, 2> bounds{0, ~0ULL};  // the offset and the count
    for (std::size_t i = 0; i < dump.range.size() && i < bounds.size(); ++i) {
        char const* name = i == 0 ? "offset" : "count";
        Variant const number = Evaluate(dump.range[i]);
        if (number.type() != Tavrel::VariantType::kNumber) {
            throw ScriptError(dump.range[i].position, "dump: the " + std::string(name) +
                                                          " must be a NUMBER, not " +
                                                          TypeName(number.type()));
        }
        std::string error;
        if (!ReadDumpBound(name, number.number(), bounds[i], error)) {
            throw ScriptError(dump.range[i].position, "dump: " + error);
        }
    }
    return bounds;
}

void Interpreter::ExecuteDump(Dump const& dump) {
    Variant const value = Evaluate(dump.value);
    std::array<unsigned long long, 2> const bounds = DumpBounds(dump);
    unsigned int const type = value.type();
    if (type != Tavrel::VariantType::kString && type != Tavrel::VariantType::kDataRef) {
        throw ScriptError(dump.value.position,
                          "dump shows a DATAREF or a STRING, not " + TypeName(type));
    }
    Tavrel::AutoRefPtr<Tavrel::IDataRef> const data = value.data();
    if (type == Tavrel::VariantType::kDataRef && !data) {
        mOut << "null\n";
        return;
    }
    std::string_view const bytes = value.string();
    ByteRange const range = DumpRange(data ? data->GetSize() : bytes.size(), bounds[0], bounds[1]);
    if (range.begin == range.end) {
        mOut << "(no bytes)\n";
    } else if (data) {
        WriteHexDump(mOut, *data.get(), range,
                     [this] { return mContext.Interface_IsInterrupted(); });
    } else {
        mOut << HexDump(bytes.substr(range.begin, range.end - range.begin), range.begin);
    }
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
        throw ScriptError(position,
                          DescribeBindingFailure(signature, TypeNames(arguments), status));
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
    std::vector<std::string> const refused =
        mSandbox != nullptr ? mSandbox->TakeRefusals() : std::vector<std::string>{};
    if (reports.empty() && refused.empty()) {
        return;
    }
    // Keep what print showed so far in front of the reports when both streams meet.
    mOut.flush();
    for (ErrorReport const& report : reports) {
        mErr << FormatAt(mFile, position, ReportText(report)) << '\n';
        mHadReports = true;
    }
    for (std::string const& path : refused) {
        mErr << RefusalText(path) << '\n';
    }
    if (mSettings.strict && !reports.empty()) {
        throw StrictStop{};
    }
}

}  // namespace minihost
