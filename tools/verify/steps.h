// The steps of the kit, by the names under which docs/testing.md and the report speak of them. Each
// test program is a step besides, by the name of the program.
#pragma once

#include <array>
#include <string_view>

namespace rdv::verify {

namespace step {
inline constexpr std::string_view kSites = "sites";
inline constexpr std::string_view kRoutes = "routes";
inline constexpr std::string_view kProvider = "provider";
inline constexpr std::string_view kRegistering = "registering";
inline constexpr std::string_view kHost = "host";
inline constexpr std::string_view kTraces = "traces";
}  // namespace step

struct StepDescription {
  std::string_view name;
  std::string_view proves;
};

inline constexpr std::array<StepDescription, 6> kSteps = {{
    {step::kSites, "the sites that the tests work on are made on this machine"},
    {step::kRoutes,
     "the scenarios played through the provider and through the product's engine "
     "give the same answers and the same files"},
    {step::kProvider, "the provider reads in each file that was written what the engine reads"},
    {step::kRegistering,
     "regsvr32 registers the component, a host's process creates it by name "
     "and plays with it, regsvr32 takes it out"},
    {step::kHost, "the example host shows a site's lines; what it looks like"},
    {step::kTraces, "the registry and the machine's own site are as before"},
}};

// Behind the name of a test program that ran once more with the current common controls.
inline constexpr std::string_view kCurrentControls = " with current controls";

}  // namespace rdv::verify
