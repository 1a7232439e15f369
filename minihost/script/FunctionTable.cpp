#include "minihost/script/FunctionTable.h"

#include <algorithm>
#include <utility>

#include "minihost/script/Suggestions.h"

namespace minihost {

namespace {

std::string Arguments(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " argument" : " arguments");
}

bool Fits(Signature const& signature, std::vector<std::string_view> const& typeWords) {
    if (signature.parameters.size() != typeWords.size()) {
        return false;
    }
    for (std::size_t i = 0; i < typeWords.size(); ++i) {
        if (signature.parameters[i] != typeWords[i]) {
            return false;
        }
    }
    return true;
}

}  // namespace

FunctionTable::FunctionTable(std::vector<Signature> signatures)
    : mSignatures(std::move(signatures)) {}

std::vector<Signature const*> FunctionTable::Candidates(std::string_view name, std::size_t count,
                                                        std::string& error) const {
    error.clear();
    std::vector<Signature const*> named;
    std::vector<Signature const*> fitting;
    for (Signature const& signature : mSignatures) {
        if (signature.name == name) {
            named.push_back(&signature);
            if (signature.parameters.size() == count) {
                fitting.push_back(&signature);
            }
        }
    }
    if (named.empty()) {
        std::string const question = DidYouMean(ClosestNames(name, Names()));
        error = "no function '" + std::string(name) + "'" +
                (question.empty() ? " (help lists the module's functions)" : "; " + question);
    } else if (fitting.empty()) {
        error = "no form of '" + std::string(name) + "' takes " + Arguments(count) + "; there " +
                (named.size() == 1 ? "is" : "are") + ":\n" + ListSignatures(named);
    }
    if (!error.empty() && error.back() == '\n') {
        error.pop_back();
    }
    return fitting;
}

std::vector<std::string> FunctionTable::Names() const {
    std::vector<std::string> names;
    for (Signature const& signature : mSignatures) {
        if (std::find(names.begin(), names.end(), signature.name) == names.end()) {
            names.push_back(signature.name);
        }
    }
    return names;
}

Signature const* FunctionTable::Choose(std::vector<Signature const*> const& candidates,
                                       std::vector<std::string_view> const& typeWords) {
    if (candidates.size() == 1) {
        return candidates.front();
    }
    for (Signature const* candidate : candidates) {
        if (Fits(*candidate, typeWords)) {
            return candidate;
        }
    }
    return nullptr;
}

Signature const* FunctionTable::FindEntry(std::string_view entry) const {
    for (Signature const& signature : mSignatures) {
        if (signature.entry == entry) {
            return &signature;
        }
    }
    return nullptr;
}

std::string FunctionTable::ListSignatures(std::vector<Signature const*> const& signatures) {
    std::string text;
    for (Signature const* signature : signatures) {
        text += "  " + FormatSignature(*signature) + '\n';
    }
    return text;
}

}  // namespace minihost
