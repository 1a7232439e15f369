#include "minihost/script/Describe.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "minihost/host/SystemFiles.h"
#include "minihost/script/ModuleSetup.h"

namespace minihost {

namespace {

// The label shown and the fixed-text function that gives the value.
struct FixedText {
    char const* label;
    char const* function;
};

constexpr std::array<FixedText, 14> kFixedTexts{{
    {"Version", "GetModuleVersion"},
    {"State", "GetState"},
    {"Platforms", "GetSupportedPlatforms"},
    {"Downwards compatibility", "GetDownwardsCompatibility"},
    {"SDK dependency", "GetSDKDependency"},
    {"Tavrel version", "GetModuleTavrelVersion"},
    {"Tavrel SDK version", "GetTavrelSDKVersion"},
    {"Module dependencies", "GetModuleDependencies"},
    {"Optional dependencies", "GetModuleDependenciesOptional"},
    {"Load before", "GetModuleDependenciesLoadBefore"},
    {"Alternative functions", "GetAlternativeFunctionDependencies"},
    {"Alternative procedures", "GetAlternativeProcedureDependencies"},
    {"Optional functions", "GetOptionalFunctionDependencies"},
    {"Optional procedures", "GetOptionalProcedureDependencies"},
}};

constexpr std::size_t kLabelWidth = 25;

std::string Shown(char const* text) {
    if (text == nullptr) {
        return "(null)";
    }
    return *text == '\0' ? "-" : text;
}

void Line(std::ostream& out, std::string const& label, std::string const& value) {
    std::string padded = label + ':';
    padded.resize(std::max(padded.size() + 1, kLabelWidth), ' ');
    out << padded << value << '\n';
}

using Row = std::array<std::string, 5>;

std::string Parameters(Signature const& signature) {
    std::string text;
    for (std::string const& word : signature.parameters) {
        text += (text.empty() ? "" : ",") + word;
    }
    return "(" + text + ")";
}

void PrintTable(std::vector<Row> const& rows, std::ostream& out) {
    std::array<std::size_t, 5> widths{};
    for (Row const& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    for (Row const& row : rows) {
        std::string line;
        for (std::size_t column = 0; column < row.size(); ++column) {
            std::string cell = row[column];
            if (column + 1 < row.size()) {
                cell.resize(widths[column] + 2, ' ');
            }
            line += cell;
        }
        out << "  " << line << '\n';
    }
}

}  // namespace

void Describe(LoadedModule const& module, FunctionTable const& table, std::ostream& out) {
    Line(out, "Module", ModuleName(module.Path()));
    std::string file;
    Line(out, "Module file", ResolveRealPath("", module.Path(), file) ? file : module.Path());
    for (FixedText const& fixed : kFixedTexts) {
        Line(out, fixed.label, Shown(module.Text(fixed.function)));
    }
    out << '\n' << table.signatures().size() << " script functions:\n";
    std::vector<Row> rows{{"Kind", "Result", "Name", "Parameters", "Entry"}};
    for (Signature const& signature : table.signatures()) {
        rows.push_back({signature.kind, signature.result, signature.name, Parameters(signature),
                        signature.entry});
    }
    PrintTable(rows, out);
}

}  // namespace minihost
