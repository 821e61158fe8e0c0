#pragma once

#include <string>

namespace Contract {

/// Compares `printed` with the file of this name beside the tests, line by line; a difference fails
/// the test and is shown as a diff. With VELA_REGENERATE_GOLDEN set in the environment the file is
/// written instead:
///
///   VELA_REGENERATE_GOLDEN=1 build/debug/bin/test_contract --gtest_filter='Golden.*'
///
/// What changes in it is then for a person to read: ids and names of attributes are what agents
/// build against, and each line of the wiring is a handler that runs or does not.
void expectGolden(const std::string& name, const std::string& printed);

}  // namespace Contract
