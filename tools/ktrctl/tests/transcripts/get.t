# get and raw get print what bash assigns: the last assignment of a key, quoted so that the
# printed line assigns the same value. They read regular files of at most 8 MiB only.

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

# Of several assignments of a key, in any spelling, the last counts, and raw get prints it as
# that line spells it; an earlier line that runs a command does not matter, a last one does.
$ printf 'A=1\nB='\''x y'\''\na="2"\nC=$(cmd)\nC=3\nD=4\nD=`cmd`\n' > last.conf && ktrctl raw get last.conf A c E
a="2"
C="3"
(exit 1)

$ ktrctl raw get last.conf D
ktrctl: last.conf: line 7 assigns D in a form that is not read (an expansion or a command)
(exit 2)

# Only regular files are read: a missing file is refused, and so are a FIFO (without waiting on
# it), a folder and a device; a link to nothing is a missing file. (A folder given to a command
# stands for the .conf files in it; odd/folder.conf is one of these, and a folder itself.)
$ ktrctl raw get absent
ktrctl: cannot read absent: No such file or directory
(exit 2)

$ mkdir odd && mkfifo odd/fifo.conf && mkdir odd/folder.conf && ln -s nowhere odd/dangling.conf &&
> timeout 10 ktrctl raw get odd /dev/null --
ktrctl: cannot read odd/dangling.conf: No such file or directory
ktrctl: cannot read odd/fifo.conf: not a regular file
ktrctl: cannot read odd/folder.conf: not a regular file
ktrctl: cannot read /dev/null: not a regular file
(exit 2)

# A file of 8 MiB is read to its last line; one byte more, and it is refused.
$ { head -c 8388603 /dev/zero | tr '\0' '#'; printf '\nA=1\n'; } > big.conf && wc -c < big.conf &&
> ktrctl raw get big.conf A
8388608
A="1"

$ printf '\n' >> big.conf && ktrctl raw get big.conf A
ktrctl: cannot read big.conf: larger than 8388608 bytes
(exit 2)

# A carriage return would end up in the value bash reads: both reading and writing refuse,
# whatever the key, and the file stays as it was.
$ printf 'A="1"\r\nB="2"\r\n' > dos.conf && cp dos.conf dos.before

$ ktrctl raw get dos.conf
ktrctl: dos.conf: line 1 ends in a carriage return (DOS line ends), which bash reads into the value
(exit 2)

$ ktrctl raw set dos.conf A=3
ktrctl: dos.conf: line 1 ends in a carriage return (DOS line ends), which bash reads into the value
(exit 2)

$ ktrctl raw set dos.conf C=3
ktrctl: dos.conf: line 1 ends in a carriage return (DOS line ends), which bash reads into the value
(exit 2)

$ cmp dos.before dos.conf

# A folder with no *.conf file in it is most likely the wrong one, and a path given where keys go
# (several files need -- before the keys) is no key: both are errors rather than silence.
$ mkdir nothing && for command in 'raw get nothing' 'set nothing -- HOSTNAME=h' 'check nothing'; do
>   ktrctl $command; test $? = 2 || echo "$command: not refused"
> done
ktrctl: the folder nothing holds no *.conf file
ktrctl: the folder nothing holds no *.conf file
ktrctl: the folder nothing holds no *.conf file

$ ktrctl raw get dos.before containers/101.conf
ktrctl: 'containers/101.conf' is not a key name (letters, digits and _)
(exit 2)
