#ifndef TESTS_LARKSPURCOMMON_REGISTRYTEST_H
#define TESTS_LARKSPURCOMMON_REGISTRYTEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "LarkspurCommon/Aregistry.h"
#include "support/Scratch.h"
#include "support/TraceLog.h"

namespace corvo_test {

// An installation of its own, in which nothing was started before.
class RegistryTest : public testing::Test {
 protected:
  RegistryTest() {
    CorvoSettingsDirectory();  // the test host prepares it once
    RemoveTree(ScratchPath("bin"));
    RemoveTree(ScratchPath("etc"));
    MakeDirectory(ScratchPath("bin"));
    MakeDirectory(ScratchPath("etc"));
  }

  static std::string Settings() { return ReadFile(ScratchPath("etc/corvo_settings.ini")); }

  // Of an entry as the settings file holds it; "-" when it holds none.
  static std::string Stored(const std::string& upperName) {
    const std::string file = "\n" + Settings();
    const std::size_t begin = file.find("\n" + upperName + "=");
    if (begin == std::string::npos) return "-";
    const std::size_t value = begin + upperName.size() + 2;
    return file.substr(value, file.find("\r\n", value) - value);
  }

  void Store(const std::string& settings) {
    WriteFile(ScratchPath("etc/corvo_settings.ini"), settings);
  }
};

// In which a configuration has started.
class StartedRegistryTest : public RegistryTest {
 protected:
  StartedRegistryTest() { m_registry.Init(); }

  void Set(const std::string& name, const std::string& value) {
    m_registry.SetRegistryEntry(name.c_str(), value.c_str());
  }

  VMRegistry m_registry;
};

}  // namespace corvo_test

#endif
