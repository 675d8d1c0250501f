# set changes the lines of the keys named and nothing else, whatever the record would write for
# the other lines; a new key goes at the end.

$ cat > c.conf <<'END'
> NETIF="ifname=eth0,mac=02:00:00:00:00:01,note=uplink,ip=10.0.0.5/24"
> SEARCHDOMAIN="example.test corp.test"
> FEATURES="ipv6:off fuse:on"
> IPTABLES="iptable_mangle iptable_filter"
> VE_PRIVATE='/srv/private/$VEID'
> HOSTNAME="old"
> END
> printf 'NUMPROC="100:200"' >> c.conf && cp c.conf c.before

$ ktrctl set c.conf HOSTNAME=new 'DESCRIPTION=cost $5' && ktrctl get c.conf DESCRIPTION
DESCRIPTION="cost \$5"

$ diff c.before c.conf
6,7c6,8
< HOSTNAME="old"
< NUMPROC="100:200"
\ No newline at end of file
---
> HOSTNAME="new"
> NUMPROC="100:200"
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
> for change in NETIF=garbage DISK=x NETIF=ifname=eth1,note=uplink CPULIMIT=1e400 CPULIMIT=12.345 \
>     NUMPROC=1:x ONBOOT=1 ONBOOT= NO_SUCH_KEY=1; do
>   ktrctl set containers/101.conf $change; test $? = 2 || echo "$change: not refused"
> done
ktrctl: containers/101.conf: NETIF=garbage: the agent would read this as ""
ktrctl: containers/101.conf: DISK=x: the agent would read this as "image=,size=0,uuid={00000000-0000-0000-0000-000000000000}"
ktrctl: containers/101.conf: NETIF=ifname=eth1,note=uplink: the agent would read this as "ifname=eth1,network=,mac=,nettype=bridged,dhcp=no"
ktrctl: containers/101.conf: CPULIMIT=1e400: the value does not parse
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
