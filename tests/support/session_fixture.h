// The fixture most command tests start from: a started session in a fresh folder, answered by
// a recording shell, with a dispatcher for its commands.
#pragma once

#include <gtest/gtest.h>

#include "core/app/command_dispatcher.h"
#include "core/app/recording_shell.h"
#include "core/app/session.h"
#include "tests/support/test_support.h"

namespace quarvel::test {

struct SessionTest : ::testing::Test {
  TempDir dir;
  RecordingShell shell;
  Session session{shell, dir.path()};
  CommandDispatcher dispatcher{session};

  void SetUp() override { session.start(); }
};

}  // namespace quarvel::test
