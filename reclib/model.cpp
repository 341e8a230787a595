#include "reclib/model.h"

#include <cctype>
#include <cmath>
#include <limits>

namespace qumbrel::reclib {

Fields& Fields::put(std::string_view name, Value v) {
    if (Value* old = const_cast<Value*>(find(name))) {
        *old = std::move(v);
        return *this;
    }
    items_.emplace_back(std::string(name), std::move(v));
    if (items_.size() == kIndexFrom) {
        for (std::size_t k = 0; k < items_.size(); ++k) index_.emplace(items_[k].first, k);
    } else if (items_.size() > kIndexFrom) {
        index_.emplace(items_.back().first, items_.size() - 1);
    }
    return *this;
}

const Value* Fields::find(std::string_view name) const {
    if (!index_.empty()) {
        const auto it = index_.find(std::string(name));
        return it == index_.end() ? nullptr : &items_[it->second].second;
    }
    for (const auto& [n, value] : items_) {
        if (n == name) return &value;
    }
    return nullptr;
}

std::int32_t Fields::i(std::string_view name, std::int32_t def) const {
    const Value* v = find(name);
    if (!v) return def;
    if (const auto* p = std::get_if<std::int32_t>(v)) return *p;
    if (const auto* p = std::get_if<double>(v)) {
        // Out-of-range and NaN doubles must not reach the conversion (undefined).
        if (!(std::fabs(*p) < 2147483647.0)) return 0;
        return static_cast<std::int32_t>(*p);
    }
    return 0;
}

double Fields::d(std::string_view name, double def) const {
    const Value* v = find(name);
    if (!v) return def;
    if (const auto* p = std::get_if<double>(v)) return *p;
    if (const auto* p = std::get_if<std::int32_t>(v)) return *p;
    return 0.0;
}

std::string_view Fields::s(std::string_view name) const {
    const Value* v = find(name);
    if (const auto* p = v ? std::get_if<std::string>(v) : nullptr) return *p;
    return {};
}

std::vector<Fields>& RecorderFile::list(std::string_view name) {
    auto it = lists.find(name);
    if (it == lists.end()) it = lists.emplace(std::string(name), std::vector<Fields>{}).first;
    return it->second;
}

const std::vector<Fields>* RecorderFile::find_list(std::string_view name) const {
    auto it = lists.find(name);
    return it == lists.end() ? nullptr : &it->second;
}

std::int32_t ticks_per_second(Family family) {
    return family == Family::VU || family == Family::HN ? 1000 : 8;
}

std::string_view family_name(Family family) {
    switch (family) {
        case Family::VT:
            return "VT";
        case Family::VU:
            return "VU";
        case Family::VQ:
            return "VQ";
        case Family::KL:
            return "KL";
        case Family::HN:
            return "HN";
    }
    return "";
}

bool parse_family(std::string_view text, Family& out) {
    std::string up;
    for (char c : text) up += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (Family f : {Family::VT, Family::VU, Family::VQ, Family::KL, Family::HN}) {
        if (up == family_name(f)) {
            out = f;
            return true;
        }
    }
    return false;
}

std::string_view default_extension(Family family, Kind kind) {
    const bool display = kind == Kind::Display;
    switch (family) {
        case Family::VT:
            return display ? ".ogd" : ".oge";
        case Family::VU:
            return display ? ".osd" : ".ose";
        case Family::VQ:
            return display ? ".obd" : ".obe";
        case Family::KL:
            return kind == Kind::Event ? ".kle" : ".kld";
        case Family::HN:
            return display ? ".hnd" : ".hns";
    }
    return "";
}

}  // namespace qumbrel::reclib
