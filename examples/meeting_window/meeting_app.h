#pragma once

// The program around the meeting window: the command line, the library's start-up as a client
// does it, and the interactive or scripted run. A harness that can do more than a client (the
// test tree's, which plugs screens in and out) passes its own scenario.

#include <QString>
#include <functional>
#include <memory>

namespace meeting {

class LogRecorder;
class MeetingWindow;
class Scenario;

/// Makes the scenario of one round (numbered from 1) for a fresh window.
using ScenarioFactory = std::function<std::unique_ptr<Scenario>(
    MeetingWindow& window, const QString& out_dir, LogRecorder& log, int round)>;

/// What a harness that can do more than a client brings to the program.
struct Harness {
  /// Makes each round's scenario; empty plays the program's own.
  ScenarioFactory make_scenario;
  /// Figures of the harness's own, appended as they are to each round's line of figures
  /// (" name=value" pairs, read by the soak test).
  std::function<QString()> more_figures;
};

/// The whole program: `qt_util_meeting [--script [--repeat N] [--out DIR] [--no-seat]]`. Returns
/// the process's exit status.
int RunMeetingApp(int argc, char** argv, const Harness& harness = {});

}  // namespace meeting
