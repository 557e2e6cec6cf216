#include "operations.h"

#include <algorithm>
#include <initializer_list>
#include <sstream>
#include <stdexcept>

#include "framework_version.h"
#include "operations/operation_families.h"

namespace kel::tavren::tests {

namespace {

// The first error of the running operation, for each thread.
thread_local std::string wrong;

// Omits operations whose failure this version of the framework does not cause.
std::vector<Operation> possible(std::vector<Operation> all) {
  all.erase(std::remove_if(all.begin(), all.end(),
                           [](const Operation &operation) {
                             return !framework_can_cause(operation.error.code);
                           }),
            all.end());
  return all;
}

std::vector<Operation> all_operations() {
  std::vector<Operation> all;
  for (const auto &family : {checks_and_lookup_operations(), construction_and_control_operations(),
                             topology_operations(), media_types_and_selection_operations(),
                             caps_and_search_operations(), diagnostics_text_operations()})
    all.insert(all.end(), family.begin(), family.end());
  return all;
}

std::vector<std::string> make_expected_warnings() {
  std::vector<std::string> warnings = {"presence == GST_PAD_REQUEST",
                                       "already has a pad named sink_0", "is invalid for instance"};
  if (framework_is_1_18())
    warnings.insert(warnings.end(), {"is not unique in bin", "already has parent"});
  else
    warnings.emplace_back("GST_CLOCK_TIME_IS_VALID");
  return warnings;
}

// The error of an operation, with its class determined from its code.
struct Outcome {
  int code = 0;
  std::string text;
};

Outcome outcome_of(const Operation &operation, const Scene &scene) {
  try {
    operation.run(scene);
  } catch (const Backend_Error<std::runtime_error> &error) {
    require(error.code() != TEC::INVALID_RESOLUTION, "threw a backend error");
    return {error.code(), error.what()};
  } catch (const Tavren_Error<std::logic_error> &error) {
    require(error.code() == TEC::INVALID_RESOLUTION, "threw a logic error");
    return {error.code(), error.what()};
  } catch (const std::exception &error) {
    require(false, "threw another class");
    return {-1, error.what()};
  }
  return {};
}

Outcome outcome_of(const Expected_Error &error) {
  return {error.code, error.code != 0 ? text_of(error) : ""};
}

}  // namespace

void require(bool held, const char *what) {
  if (!held && wrong.empty()) wrong = what;
}

const std::vector<Operation> operations = possible(all_operations());

const std::vector<std::string> expected_warnings = make_expected_warnings();

std::string unexpected_behaviour(const Operation &operation, const Scene &scene) {
  wrong.clear();
  const Outcome outcome = outcome_of(operation, scene);
  const Outcome expected = outcome_of(operation.error);
  if (wrong.empty() && outcome.code == expected.code && outcome.text == expected.text) return {};

  std::ostringstream text;
  text << operation.name << ": " << wrong << " (code 0x" << std::hex << outcome.code
       << ", expected 0x" << expected.code << ", text \"" << outcome.text << "\")";
  return text.str();
}

}  // namespace kel::tavren::tests
