# set changes the lines of the keys named and nothing else, whatever the record would write for
# the other lines; a new key goes at the end. The file is replaced whole, keeping its owner and
# mode, through a symbolic link if it is one.

$ cat > c.conf <<'END'
> NETIF="ifname=eth0,mac=02:00:00:00:00:01,note=uplink,ip=10.0.0.5/24"
> SEARCHDOMAIN="example.test corp.test"
> FEATURES="ipv6:off fuse:on"
> IPTABLES="iptable_mangle iptable_filter"
> VE_PRIVATE='/srv/private/$VEID'
> HOSTNAME="old"
> END
> printf 'NUMPROC="100:200"' >> c.conf && cp c.conf c.before

$ ktrctl set c.conf HOSTNAME=new NUMPROC=150:250 'DESCRIPTION=cost $5' && ktrctl get c.conf DESCRIPTION
DESCRIPTION="cost \$5"

$ diff c.before c.conf
6,7c6,8
< HOSTNAME="old"
< NUMPROC="100:200"
\ No newline at end of file
---
> HOSTNAME="new"
> NUMPROC="150:250"
> DESCRIPTION="cost \$5"
(exit 1)

# raw set rewrites every assignment of the key and leaves the other quoting alone.
$ cat > r.sh <<'END'
> var='Some "funny" value'
> A='x"y'
> X='`cmd`'
> B=1
> B=2
> END
> cp r.sh r.before && ktrctl raw set r.sh 'B=x y'

$ diff r.before r.sh
4,5c4,5
< B=1
< B=2
---
> B="x y"
> B="x y"
(exit 1)

# A value the agent would not read back as given is refused (exit 2), and so is a key the
# library does not know; the file is left as it was.
$ cp containers/101.conf 101.before
> for change in NETIF=garbage DISK=x NETIF=ifname=eth1,note=uplink NETIF=ifname=eth1,dhcp=yes,ip=10.0.0.9 \
>     CPULIMIT=1e400 CPULIMIT=0x10 CPULIMIT=12.345 NUMPROC=1:x ONBOOT=1 ONBOOT= NO_SUCH_KEY=1; do
>   ktrctl set containers/101.conf $change; test $? = 2 || echo "$change: not refused"
> done
ktrctl: containers/101.conf: NETIF=garbage: the agent would read this as ""
ktrctl: containers/101.conf: DISK=x: the agent would read this as "image=,size=0,uuid={00000000-0000-0000-0000-000000000000}"
ktrctl: containers/101.conf: NETIF=ifname=eth1,note=uplink: the agent would read this as "ifname=eth1,network=,mac=,nettype=bridged,dhcp=no"
ktrctl: containers/101.conf: NETIF=ifname=eth1,dhcp=yes,ip=10.0.0.9: the agent would read this as "ifname=eth1,network=,mac=,nettype=bridged,dhcp=yes"
ktrctl: containers/101.conf: CPULIMIT=1e400: the value does not parse
ktrctl: containers/101.conf: CPULIMIT=0x10: the value does not parse
ktrctl: containers/101.conf: CPULIMIT=12.345: the agent would read this as "12.34"
ktrctl: containers/101.conf: NUMPROC=1:x: the value does not parse
ktrctl: containers/101.conf: ONBOOT=1: the value does not parse
ktrctl: containers/101.conf: ONBOOT=: a flag or number cannot be cleared
ktrctl: containers/101.conf: unknown key NO_SUCH_KEY (raw set sets any key)

$ ktrctl set containers/101.conf NAME=x name=y
ktrctl: name is given twice
(exit 2)

$ ktrctl set containers/101.conf 'DESCRIPTION=a
> b'
ktrctl: the value of DESCRIPTION holds a line break or NUL byte, which the file cannot hold
(exit 2)

$ ktrctl raw set containers/101.conf 'x;touch PWNED;y=1'
ktrctl: 'x;touch PWNED;y' is not a key name (letters, digits and _)
(exit 2)

$ ktrctl raw set containers/101.conf hostname=x
ktrctl: containers/101.conf: line 51 spells hostname as HOSTNAME; give the key as the file spells it
(exit 2)

$ ktrctl set absent.conf NAME=x
ktrctl: cannot read absent.conf: No such file or directory
(exit 2)

# Nothing ran and nothing was made.
$ cmp 101.before containers/101.conf && ls
101.before
c.before
c.conf
conflicts
containers
node.conf
r.before
r.sh

# Every value the shipped file holds reads back as given: setting them all changes no byte.
$ sed -n '/^LOCAL/d; s/^\([A-Z_]*\)="\(.*\)"$/\1=\2/p' containers/101.conf > values && wc -l < values
47

$ tr '\n' '\0' < values | xargs -0 ktrctl set containers/101.conf && cmp 101.before containers/101.conf

# A value is changed in place, keeping the comment after it. global set takes a key in any
# spelling and appends a new one upper case; raw set appends a new key as given, and refuses a
# key the file spells otherwise.
$ printf '# c\nA='\''x'\''  # note\nB=2\n' > q.conf && ktrctl global set q.conf a=y new=v && cat q.conf
# c
A="y"  # note
B=2
NEW="v"

$ printf 'B=2\n' > g.conf && ktrctl raw set g.conf new=v && cat g.conf
B=2
new="v"

$ printf 'Path=1\n' > p.conf && ktrctl raw set p.conf PATH=2
ktrctl: p.conf: line 1 spells PATH as Path; give the key as the file spells it
(exit 2)

# The value is all after the first "=", and may be empty.
$ printf 'A=1\nB=2\n' > v.conf && ktrctl raw set v.conf A= B==1 && cat v.conf
A=""
B="=1"

$ for item in =1 A ''; do ktrctl raw set v.conf "$item"; test $? = 2 || echo "'$item': not refused"; done
ktrctl: '=1' is not KEY=VALUE
ktrctl: 'A' is not KEY=VALUE
ktrctl: '' is not KEY=VALUE

# What bash would expand is escaped, but for the container-id placeholder $VEID.
$ : > e.conf && ktrctl raw set e.conf 'A=$x `y` "z" \w' 'R=/r/$VEID $VEIDX' && cat e.conf
A="\$x \`y\` \"z\" \\w"
R="/r/$VEID \$VEIDX"

# A missing final newline stays missing, unless a key is appended after the last line.
$ printf 'A=1\nB=2' > n.conf && cp n.conf n.before && ktrctl raw set n.conf A=3 && diff n.before n.conf
1c1
< A=1
---
> A="3"
(exit 1)

$ printf 'A=1' > n.conf && ktrctl raw set n.conf B=2 && cat n.conf
A=1
B="2"

# "A-=1" is a command, not an assignment of A: A is appended.
$ printf 'A-=1\n' > m.conf && ktrctl raw set m.conf A=2 && cat m.conf
A-=1
A="2"

# A key the file assigns through a command, export, local or +=, and any key of a file whose
# quotes do not close, is refused; the files stay as they were.
$ mkdir refused && printf 'A=$(date)\n' > refused/command.conf && printf 'export A=1\n' > refused/export.conf &&
> printf 'B=1\n  local -r  A=1\n' > refused/local.conf && printf 'A=1\nA+=2\n' > refused/append.conf &&
> printf 'B=1\nA="x\n' > refused/open.conf && cp -R refused refused.before

$ for f in command export local append; do
>   ktrctl raw set refused/$f.conf A=1; test $? = 2 || echo "$f.conf: not refused"
> done
ktrctl: refused/command.conf: line 1 assigns A in a form that is not rewritten (an expansion or a command)
ktrctl: refused/export.conf: line 1 assigns A in a form that is not rewritten (an expansion or a command)
ktrctl: refused/local.conf: line 2 assigns A in a form that is not rewritten (an expansion or a command)
ktrctl: refused/append.conf: line 2 assigns A in a form that is not rewritten (an expansion or a command)

$ printf 'readonly Ab_9=1\n' > readonly.conf && ktrctl raw set readonly.conf Ab_9=2
ktrctl: readonly.conf: line 1 assigns Ab_9 in a form that is not rewritten (an expansion or a command)
(exit 2)

$ ktrctl raw set refused/open.conf B=1
ktrctl: refused/open.conf: line 2: the value is not closed on its line
(exit 2)

$ diff -r refused.before refused

# set replaces the file rather than writing into it: a hard link to the old file keeps the old
# text. The new file has the old one's owner, group and mode, set-id bits included, and nothing
# is left beside it. (Run as root, the file first goes to another owner, who must be kept.)
$ mkdir attr && printf 'OLD="1"\n' > attr/ve.conf && { test "$(id -u)" != 0 || chown 65534:65534 attr/ve.conf; } &&
> chmod 6750 attr/ve.conf && ln attr/ve.conf ve.old && stat -c '%a %u:%g' attr/ve.conf > ve.stat && stat -c %a attr/ve.conf
6750

$ ktrctl raw set attr/ve.conf OLD=2 && cat attr/ve.conf ve.old && stat -c '%a %u:%g' attr/ve.conf | cmp ve.stat - &&
> ls -A attr
OLD="2"
OLD="1"
ve.conf

# A group that alone differs from the writer's is kept as well. (Run as root, the file first goes
# to another group.)
$ printf 'A=1\n' > attr/group.conf && { test "$(id -u)" != 0 || chgrp 65534 attr/group.conf; } &&
> stat -c %u:%g attr/group.conf > group.stat && ktrctl raw set attr/group.conf A=2 && stat -c %u:%g attr/group.conf | cmp group.stat -

# A symbolic link is followed: the file it names is replaced and the link stays a link, also
# when that file's name is as long as a name may be (255 bytes).
$ mkdir links && long=$(printf '%0255d' 0 | tr 0 n) && printf 'A=1\n' > links/$long && ln -s $long links/ve.conf &&
> ktrctl raw set links/ve.conf A=2 && stat -c %F links/ve.conf && cat links/$long && ls -A links | wc -l
symbolic link
A="2"
2

# A NETIF item may leave out what the agent fills in (network, type, DHCP): set takes it as
# written, since the agent reads all of it.
$ cp containers/101.conf short.conf && ktrctl set short.conf NETIF=ifname=eth0,mac=02:00:00:00:00:01,ip=10.0.0.9/24 &&
> grep ^NETIF short.conf
NETIF="ifname=eth0,mac=02:00:00:00:00:01,ip=10.0.0.9/24"
