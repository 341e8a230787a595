#pragma once
// The time column's form, shared by the VT, VU and VQ report generators: once a file
// with a whole-second sample rate has been reported, every later report of the same
// program run shows plain times (nothing clears it; kept so).
namespace qumbrel {

struct PlainTimeState {
    bool plainTime = false;
};

}  // namespace qumbrel
