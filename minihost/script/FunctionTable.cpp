#include "minihost/script/FunctionTable.h"

#include <algorithm>
#include <utility>

#include "minihost/script/Suggestions.h"

namespace minihost {

namespace {

std::string Arguments(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " argument" : " arguments");
}

// "no form of 'F' takes 2 arguments; there is:\n  F (DATAREF)\n"
std::string NoForm(std::string_view name, std::size_t count,
                   std::vector<Signature const*> const& named) {
    return "no form of '" + std::string(name) + "' takes " + Arguments(count) + "; there " +
           (named.size() == 1 ? "is" : "are") + ":\n" + FunctionTable::ListSignatures(named);
}

// "no function 'size'; did you mean 'Size'?", given the closest names; none: a pointer to help.
std::string NoFunction(std::string_view name, std::vector<std::string> const& close) {
    std::string const question = DidYouMean(close);
    return "no function '" + std::string(name) + "'" +
           (question.empty() ? " (help lists the module's functions)" : "; " + question);
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
    std::vector<Signature const*> const named = Named(name);
    std::vector<Signature const*> fitting;
    for (Signature const* signature : named) {
        if (signature->parameters.size() == count) {
            fitting.push_back(signature);
        }
    }
    error.clear();
    if (named.empty()) {
        error = UnknownName(name, count);
    } else if (fitting.empty()) {
        error = NoForm(name, count, named);
    }
    if (!error.empty() && error.back() == '\n') {
        error.pop_back();
    }
    return fitting;
}

std::vector<Signature const*> FunctionTable::Named(std::string_view name) const {
    std::vector<Signature const*> named;
    for (Signature const& signature : mSignatures) {
        if (signature.name == name) {
            named.push_back(&signature);
        }
    }
    return named;
}

std::string FunctionTable::UnknownFunction(std::string_view name) const {
    return NoFunction(name, ClosestNames(name, Names()));
}

std::string FunctionTable::UnknownName(std::string_view name, std::size_t count) const {
    std::vector<std::string> const close = ClosestNames(name, Names());
    std::vector<Signature const*> const best =
        close.empty() ? std::vector<Signature const*>{} : Named(close.front());
    bool const fits = std::any_of(best.begin(), best.end(), [count](Signature const* signature) {
        return signature->parameters.size() == count;
    });
    std::string const text = NoFunction(name, close);
    return best.empty() || fits ? text : text + " But " + NoForm(close.front(), count, best);
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
