// qt_util_meeting: one meeting window built from the library's pieces.
//
//   qt_util_meeting                       interactive, on the desktop
//   qt_util_meeting --script --out DIR    the fixed scenario, headless; exit status 1 when any
//                                         observation differs from the expected one
//   qt_util_meeting --script --repeat N   the scenario N times in one process, each round with a
//                                         fresh window, and one line of resource figures per round
//   qt_util_meeting --script --no-seat    on a Wayland compositor without a seat, which activates
//                                         no window: the scenario expects every window inactive
#include "meeting_app.h"

int main(int argc, char** argv) {
  return meeting::RunMeetingApp(argc, argv);
}
