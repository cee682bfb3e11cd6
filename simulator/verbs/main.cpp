#include <cstdio>
#include <exception>

#include "Base/Output.h"
#include "simulator/remote/Interruption.h"
#include "simulator/verbs/CommandReader.h"

int main(int argc, char** argv) {
  using namespace simulator;
  Exit status = Exit::done;
  try {
    Interruption::ofProcess();
    const auto verb = readCommand({argv + 1, argv + argc});
    if (verb) status = verb->perform();
  } catch (const Refusal& refusal) {
    ios::writeErrors("tellvane-sim: " + std::string(refusal.what()) + "\n");
    status = refusal.status();
  } catch (const Interrupted&) {
    status = Exit::interrupted;
  } catch (const std::exception& unexpected) {
    ios::writeErrors("tellvane-sim failed: " + std::string(unexpected.what()) + "\n");
    status = Exit::software;
  }
  return static_cast<int>(status);
}
