# global get and global set on the node's global configuration file (the shipped node.conf):
# what bash assigns, read from the text, and changes of the named keys' lines only.

# Without keys: every key the file sets, in file order; the container-id placeholder $VEID
# stays as written.
$ ktrctl global get node.conf
LOCKDIR="/run/quellix/lock"
TEMPLATE="/var/lib/quellix/templates"
OFFLINE_SERVICE="console"
VE_ROOT="/var/lib/quellix/root/$VEID"
VE_PRIVATE="/var/lib/quellix/private/$VEID"
NEW_CT_OSTEMPLATE="debian-12-minimal"
NEW_CT_SAMPLE="web-small"
AGENT_LOG="/var/log/quellix/agent.log"
AGENT_LOG_LEVEL="2"

# Keys are matched without regard to case, as the agent matches them: set takes a key in any
# spelling and changes the file's own line; a key the file does not set is appended upper case.
$ cp node.conf node.before &&
> ktrctl global set node.conf 'offline_service=console ssh' agent_log_level=3 new_ct_disk=10G &&
> diff node.before node.conf
10c10
< OFFLINE_SERVICE="console"
---
> OFFLINE_SERVICE="console ssh"
22c22,23
< AGENT_LOG_LEVEL=2
---
> AGENT_LOG_LEVEL="3"
> NEW_CT_DISK="10G"
(exit 1)

# A key assigned more than once: get prints the value the agent reads, which is the first one
# (bash would take the last) except for LOCKDIR and TEMPLATE; set rewrites every line of the key,
# so that the file holds one value whichever line is read.
$ printf 'LOCKDIR=/a\nAGENT_LOG_LEVEL=1\nlockdir=/b\nAGENT_LOG_LEVEL=2\n' > twice.conf &&
> ktrctl global get twice.conf lockdir agent_log_level && ktrctl raw get twice.conf AGENT_LOG_LEVEL
lockdir="/b"
AGENT_LOG_LEVEL="1"
AGENT_LOG_LEVEL="2"

$ ktrctl global set twice.conf LOCKDIR=/c AGENT_LOG_LEVEL=3 && cat twice.conf
LOCKDIR="/c"
AGENT_LOG_LEVEL="3"
lockdir="/c"
AGENT_LOG_LEVEL="3"

# A key whose line runs a command is neither read nor rewritten, and the agent's whole-file
# writer is for container files only; the file stays as it was.
$ printf 'LOCKDIR="$(pwd)"\n' > cmd.conf && cp cmd.conf cmd.before &&
> for args in 'get cmd.conf LOCKDIR' 'set cmd.conf LOCKDIR=/x' 'set --as-agent cmd.conf LOCKDIR=/x'; do
>   ktrctl global $args; test $? = 2 || echo "global $args: not refused"
> done
ktrctl: cmd.conf: line 1 assigns LOCKDIR in a form that is not read (an expansion or a command)
ktrctl: cmd.conf: line 1 assigns LOCKDIR in a form that is not rewritten (an expansion or a command)
ktrctl: --as-agent does not apply to global set (see ktrctl help global set)

$ cmp cmd.before cmd.conf

# The agent keeps a key's first value, so a command on a later line changes nothing it reads.
$ printf 'AGENT_LOG=/a\nAGENT_LOG="$(pwd)"\n' > late.conf && ktrctl global get late.conf AGENT_LOG
AGENT_LOG="/a"
