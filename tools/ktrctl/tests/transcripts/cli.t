# The command line: help, version, options anywhere before --, and usage errors.

$ ktrctl --help | head -n 1
usage: ktrctl [OPTIONS] COMMAND ARGS...

# A command's help, asked for three ways.
$ ktrctl help set | head -n 1
usage: ktrctl set CONF KEY=VALUE...

$ ktrctl help set > help.txt && ktrctl set --help | cmp - help.txt && ktrctl -h set | cmp - help.txt

$ ktrctl raw --help | grep '^usage'
usage: ktrctl raw get FILE [KEY...]
usage: ktrctl raw set FILE KEY=VALUE...

$ ktrctl --version
ktrctl 7.0
libKTRFunctionality.so.7 7.0

$ printf 'HOSTNAME="h"\nNUMPROC="1:2"\n' > c.conf

$ ktrctl get c.conf --verbose hostname
HOSTNAME="h"

# get reads lines; a command that reads the container's record names, with --verbose, the keys it skips.
$ ktrctl validate --verbose containers/101.conf
ktrctl: containers/101.conf: unknown key LOCAL_NOTE (skipped)

$ ktrctl set --wait=0.5 c.conf NAME=n

$ ktrctl get c.conf --
HOSTNAME="h"
NUMPROC="1:2"
NAME="n"

$ ktrctl get c.conf -- numproc
NUMPROC="1:2"

$ ktrctl get -- c.conf
ktrctl: usage: ktrctl get CONF [KEY...]
(exit 2)

$ ktrctl
ktrctl: no command (see ktrctl --help)
(exit 2)

$ ktrctl frobnicate
ktrctl: unknown command 'frobnicate' (see ktrctl --help)
(exit 2)

$ ktrctl --frobnicate get c.conf
ktrctl: unknown option --frobnicate (see ktrctl --help)
(exit 2)

$ ktrctl raw get c.conf --vocab v.xml
ktrctl: --vocab does not apply to raw get (see ktrctl help raw get)
(exit 2)

$ ktrctl get c.conf --dry-run
ktrctl: --dry-run does not apply to get (see ktrctl help get)
(exit 2)

$ for family in "global get" "msg types" "cache stat"; do ktrctl $family --dry-run; done
ktrctl: --dry-run does not apply to global get (see ktrctl help global get)
ktrctl: --dry-run does not apply to msg types (see ktrctl help msg types)
ktrctl: --dry-run does not apply to cache stat (see ktrctl help cache stat)
(exit 2)

# A family without its command gets the family's usage, whatever option of its commands is given.
$ ktrctl --dry-run raw
ktrctl: usage: ktrctl raw get FILE [KEY...] | raw set FILE KEY=VALUE...
(exit 2)

# --wait takes seconds from 0 (do not wait) to 86400.
$ touch w.conf && for wait in 0 86400; do ktrctl set --wait $wait w.conf NAME=n || echo "--wait $wait: refused"; done

$ for wait in soon -0.5 86400.5; do ktrctl set --wait $wait w.conf A=1; done
ktrctl: --wait needs a number of seconds from 0 to 86400, not 'soon'
ktrctl: --wait needs a number of seconds from 0 to 86400, not '-0.5'
ktrctl: --wait needs a number of seconds from 0 to 86400, not '86400.5'
(exit 2)

# Bytes of a path or value that would break the error line are escaped in it.
$ ktrctl raw get "$(printf 'x\001y\177')"
ktrctl: cannot read x\x01y\x7f: No such file or directory
(exit 2)

$ ktrctl help frobnicate
ktrctl: no command 'frobnicate' (see ktrctl --help)
(exit 2)

$ ktrctl raw
ktrctl: usage: ktrctl raw get FILE [KEY...] | raw set FILE KEY=VALUE...
(exit 2)

$ ktrctl set c.conf
ktrctl: usage: ktrctl set CONF KEY=VALUE...
(exit 2)

# A command's whole help (blank lines shown as "."): usage, summary, details when it has any,
# and the exit status.
$ ktrctl help msg tags | sed 's/^$/./'
usage: ktrctl msg tags
.
  print the tag table
.
  One "ID NAME" line per numeric tag, in id order.
.
Exit status:
  0 success; 1 a negative answer (a key without a value, differences or
  violations found, a damaged cache file); 2 an error, reported in one line on
  stderr starting with "ktrctl: ".

$ ktrctl help help | sed 's/^$/./' | head -n 5
usage: ktrctl help [COMMAND]
.
  print the usage, or one command's help
.
Exit status:
