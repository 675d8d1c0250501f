# set on a folder replaces every file it can; each one it cannot is named in an error line and
# left as it was. (A file the user may not write is tested in ktrctlTest.cpp: it needs a user
# other than root.)

$ mkdir node && for f in a b c; do printf '# %s\nHOSTNAME="old"\n' $f > node/$f.conf; done && mkfifo node/d.conf

$ ktrctl set node -- HOSTNAME=new NAME=n
ktrctl: cannot read node/d.conf: not a regular file
(exit 2)

$ cat node/a.conf node/b.conf node/c.conf
# a
HOSTNAME="new"
NAME="n"
# b
HOSTNAME="new"
NAME="n"
# c
HOSTNAME="new"
NAME="n"

# With several files, every output line names its file.
$ ktrctl get node/a.conf {dir}/node/c.conf -- hostname
node/a.conf: HOSTNAME="new"
{dir}/node/c.conf: HOSTNAME="new"

# Two writers on one file at once: every change of both lands.
$ printf '# shared\n' > shared.conf
> write() { for i in $(seq 15); do ktrctl raw set shared.conf W$1_$i=$i || return; done; }
> write 0 & first=$!; write 1 & second=$!; wait $first && wait $second && grep -c = shared.conf
> for w in 0 1; do for i in $(seq 15); do grep -qx "W${w}_$i=\"$i\"" shared.conf || echo "W${w}_$i lost"; done; done
30
