#include "core/usage.h"

namespace delvane {

CString GetVersionText() { return "Install Delvane " DELVANE_VERSION "\n"; }

CString GetUsageText() {
    return "Install Delvane " DELVANE_VERSION R"(: what did this installation do to the machine?

Usage:  delvane /s [switches]        an unattended run
        delvane [switches]           a run with a window, which stays open
        delvane review BASELINE CURRENT [options]
                                     what differs, for people and scripts
        delvane export SNAPSHOT      every node of a snapshot as JSON Lines
        delvane list                 which snapshots there are
        delvane --help | --version   alone on the command line
                                     (delvane review --help tells its options)

A switch begins with / or -; upper and lower case are alike. Of /bc:X and
/b:Y together the later name counts, and it is created.

Snapshots
  /bc:NAME   create the baseline snapshot and save it as NAME.dvs
  /b:NAME    load the baseline snapshot NAME.dvs (/bl:NAME is the same)
  /cc:NAME   create the current snapshot and save it as NAME.dvs
  /c:NAME    load the current snapshot NAME.dvs (/cl:NAME is the same)
Report
  /g         compare the two and write "CURRENT - BASELINE.htm"
  /gu        the same, but keep a report that already exists
  /gd        the same as /g, and open the report; /gud does both
  /res:DIR   the folder of snapshots and reports; it needs a separator, ./out
             (default: Results beside the program, or, if it is
             installed, in ~/.local/share/delvane)
What a capture reads
  /d:X  /d:X-        drive X in, whatever its kind; drive X out
  /dg:KIND /dg:KIND- a kind of drive on or off: HD hard drives (on; off turns
                     all kinds off), ND network, RD removable, CD compact discs
  /r:HIVE /r:HIVE-   a registry hive on or off: hklm, hkcu, hkcr
  /ext /ext-         file extensions on or off
The run
  /s         unattended: no window, the exit code tells the result
  /nologo    no splash window

The machine
  On Windows it is the one that the program runs on. On Linux:
  DELVANE_MACHINE    folder of a Wine prefix, or of a mounted Windows volume;
                     else WINEPREFIX; else ~/.wine
  DELVANE_USER       the account (default: the prefix's own; on a volume the
                     one that was used last)
  Run "wineserver -w" before each snapshot of a Wine prefix: Wine writes its
  registry files late. On both:
  DELVANE_HOME       folder of delvane.cfg, delvane.err and Results. What
                     stands in the first folder on its path is not captured

Exit code (bits, added up)
   0  nothing was compared     4  a snapshot could not be created
   1  compared, see the report 8  a snapshot could not be loaded
   2  the report holds errors 16  no report
  32  a visible run was asked for, and no window can be shown
  64  the program itself could not start or go on
)";
}

}  // namespace delvane
