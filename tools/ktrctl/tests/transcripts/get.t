# get and raw get print what bash assigns: the last assignment of a key, quoted so that the
# printed line assigns the same value.

$ cat > c.conf <<'END'
> # comment
> HOSTNAME=first
> NAME='a "b" $c'
> hostname="second"
> DESCRIPTION=$(date)
> LOCAL=1
> END

$ ktrctl get c.conf HOSTNAME name
HOSTNAME="second"
NAME="a \"b\" \$c"

# Without keys: every key the library knows that the file sets.
$ ktrctl get c.conf
HOSTNAME="second"
NAME="a \"b\" \$c"

# A key that is not set is left out, and the exit code says so.
$ ktrctl get c.conf NAME ONBOOT
NAME="a \"b\" \$c"
(exit 1)

$ ktrctl get c.conf DESCRIPTION
ktrctl: c.conf: line 5 assigns DESCRIPTION in a form that is not read (an expansion or a command)
(exit 2)

$ ktrctl get c.conf LOCAL
ktrctl: c.conf: unknown key LOCAL (raw get reads any key)
(exit 2)

# raw get takes keys as the file spells them.
$ ktrctl raw get c.conf local hostname
LOCAL="1"
hostname="second"

$ ktrctl raw get c.conf absent
(exit 1)

$ ktrctl global get c.conf NAME
NAME="a \"b\" \$c"

$ ktrctl raw get absent
ktrctl: cannot read absent: No such file or directory
(exit 2)

# A carriage return would end up in the value bash reads: both reading and writing refuse, and
# the file stays as it was.
$ printf 'A="1"\r\nB="2"\r\n' > dos.conf && cp dos.conf dos.before

$ ktrctl raw get dos.conf
ktrctl: dos.conf: line 1 ends in a carriage return (DOS line ends), which bash reads into the value
(exit 2)

$ ktrctl raw set dos.conf A=3
ktrctl: dos.conf: line 1 ends in a carriage return (DOS line ends), which bash reads into the value
(exit 2)

$ cmp dos.before dos.conf
