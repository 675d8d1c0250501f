# The manual page and the bash completion are written from the command table --help prints
# ($KTRCTL_DOCS is the build folder holding them): the same commands and options, in order.

$ ktrctl --help | sed -n 's/^  \([a-z][a-z ]*[a-z]\|--[a-z-]*\)\( [A-Z[]\|  \).*/\1/p' > help.names
$ sed -n '/^\.SH COMMANDS/,/^\.SH EXIT/{s/\\-/-/g;s/^\\fB\([^\\]*\)\\fR.*/\1/p;}' "$KTRCTL_DOCS/ktrctl.1" > manual.names
$ cmp help.names manual.names && wc -l < help.names
25

$ bash -c 'source "$KTRCTL_DOCS/ktrctl.bash-completion"
> COMP_WORDS=(ktrctl raw ""); COMP_CWORD=2; _ktrctl; echo "${COMPREPLY[*]}"
> COMP_WORDS=(ktrctl set --dr); COMP_CWORD=2; _ktrctl; echo "${COMPREPLY[*]}"'
get set
--dry-run
