// vb::Format(x, "0.00") and vb::CStr(x) per value, against bare std::to_chars into a buffer
// in the same run. The ratio is what a report pays per sample for VB's rounding rules.
#include <benchmark/benchmark.h>

#include <charconv>
#include <random>
#include <string>
#include <vector>

#include "frame/regional.h"
#include "frame/vbformat.h"

namespace {

using namespace qumbrel;

// Sample-like values: a few thousand around zero with up to four decimals.
const std::vector<double>& samples() {
    static const std::vector<double> v = [] {
        std::mt19937_64 rng(42);
        std::uniform_int_distribution<int> dist(-20000000, 20000000);
        std::vector<double> out(4096);
        for (auto& x : out) x = dist(rng) / 10000.0;
        return out;
    }();
    return v;
}

const RegionalProfile& profile() {
    static const RegionalProfile p = *clsRegionalSettings::named("de-DE");
    return p;
}

// Baseline: fixed notation, two decimals, no rounding rule of our own, no string.
void BM_ToCharsFixed2(benchmark::State& state) {
    const auto& v = samples();
    char buf[64];
    std::size_t i = 0;
    for (auto _ : state) {
        auto r = std::to_chars(buf, buf + sizeof buf, v[i++ & 4095], std::chars_format::fixed, 2);
        benchmark::DoNotOptimize(r.ptr);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ToCharsFixed2);

// Baseline with the std::string every caller of Format receives.
void BM_ToCharsFixed2String(benchmark::State& state) {
    const auto& v = samples();
    char buf[64];
    std::size_t i = 0;
    for (auto _ : state) {
        auto r = std::to_chars(buf, buf + sizeof buf, v[i++ & 4095], std::chars_format::fixed, 2);
        std::string s(buf, r.ptr);
        benchmark::DoNotOptimize(s);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ToCharsFixed2String);

void BM_FormatFixed2(benchmark::State& state) {
    const auto& v = samples();
    const auto& p = profile();
    std::size_t i = 0;
    for (auto _ : state) {
        std::string s = vb::Format(v[i++ & 4095], "0.00", p);
        benchmark::DoNotOptimize(s);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FormatFixed2);

void BM_FormatZeroPad(benchmark::State& state) {
    const auto& v = samples();
    const auto& p = profile();
    std::size_t i = 0;
    for (auto _ : state) {
        std::string s = vb::Format(v[i++ & 4095], "0000#", p);
        benchmark::DoNotOptimize(s);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FormatZeroPad);

// Baseline for CStr: 15 significant digits, general notation.
void BM_ToCharsGeneral15(benchmark::State& state) {
    const auto& v = samples();
    char buf[64];
    std::size_t i = 0;
    for (auto _ : state) {
        auto r =
            std::to_chars(buf, buf + sizeof buf, v[i++ & 4095], std::chars_format::general, 15);
        benchmark::DoNotOptimize(r.ptr);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ToCharsGeneral15);

void BM_CStr(benchmark::State& state) {
    const auto& v = samples();
    const auto& p = profile();
    std::size_t i = 0;
    for (auto _ : state) {
        std::string s = vb::CStr(v[i++ & 4095], p);
        benchmark::DoNotOptimize(s);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CStr);

// The CSV sink asks IsNumeric of every text cell.
void BM_IsNumeric(benchmark::State& state) {
    const auto& v = samples();
    const auto& p = profile();
    std::vector<std::string> texts;
    for (double x : v) texts.push_back(vb::CStr(x, p));
    std::size_t i = 0;
    for (auto _ : state) {
        bool b = vb::IsNumeric(texts[i++ & 4095], p);
        benchmark::DoNotOptimize(b);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_IsNumeric);

}  // namespace

BENCHMARK_MAIN();
