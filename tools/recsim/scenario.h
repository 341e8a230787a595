#pragma once
// JSON scenarios for recsim (docs/recsim.md): a base made by the simulator, then every
// field, record, channel and time the scenario names set over it.
#include <string>

#include <nlohmann/json.hpp>

#include "reclib/model.h"
#include "reclib/simulate.h"

namespace qumbrel::recsim {

// Reads "family", "kind", "seed" and the "simulate" object into `options`.
// Throws std::runtime_error with a message that names the key.
void read_sim_options(const nlohmann::json& scenario, reclib::SimOptions& options);

// Sets what the scenario names over `file`: "header", "lists", "channels", "times".
void apply_scenario(const nlohmann::json& scenario, reclib::RecorderFile& file);

// UTF-8 to the recorder's code page (Windows-1252); '?' for what it cannot show.
std::string to_cp1252(std::string_view utf8);

}  // namespace qumbrel::recsim
