# What the agent's record makes of a container file: what read shows of each value, what the
# agent writes back for it (set --as-agent rewrites every key the record holds a value for, in
# double quotes, and leaves the line of a key it holds nothing for) and what diff reports.
# Most files below hold values in single quotes, so that a line the agent rewrites shows by its
# double quotes; --verbose would name any key whose value a read did not take.

# What read prints is a message valid against the published schemas, whatever order the file
# sets the core's properties in (the shipped files set HOSTNAME before NAME).
$ for ct in containers/*.conf; do ktrctl read $ct > ct.xml && ktrctl msg validate ct.xml || echo "$ct: not valid"; done

# A file of the usual kind written back by the agent: only the form of values changes (quotes,
# blanks in a list) and the architecture TECHNOLOGIES gives is added as ARCH. A second write
# changes nothing more.
$ cat > ct.conf <<'END'
> # Configuration of container 101
> ONBOOT="yes"
> KERNELMEM=12582912:13631488
> NUMPROC="256:256"
> CPULIMIT='12.5'
> VE_ROOT="/var/lib/quellix/root/$VEID"
> HOSTNAME="ct101.example.com"
> IP_ADDRESS="10.0.0.5/24 10.0.0.6"
> NAMESERVER="8.8.8.8  8.8.4.4"
> TECHNOLOGIES="nptl x86_64"
> NETIF="ifname=eth0,network=,mac=02:00:00:00:00:01,nettype=bridged,gw=10.0.0.1,ip=10.0.0.7/24,dhcp=no"
> DISK="image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={6f1ed002-ab5d-11d1-8e4c-00c04fd430c8}"
> END

$ ktrctl --as-agent --dry-run set ct.conf ONBOOT=yes
--- ct.conf
+++ ct.conf
@@ -3,1 +3,1 @@
-KERNELMEM=12582912:13631488
+KERNELMEM="12582912:13631488"
@@ -5,1 +5,1 @@
-CPULIMIT='12.5'
+CPULIMIT="12.5"
@@ -9,1 +9,1 @@
-NAMESERVER="8.8.8.8  8.8.4.4"
+NAMESERVER="8.8.8.8 8.8.4.4"
@@ -12,0 +13,1 @@
+ARCH="x86_64"

$ ktrctl --as-agent set ct.conf ONBOOT=yes && ktrctl --as-agent --dry-run set ct.conf ONBOOT=yes

# A flag is yes in any letter case; anything else, a blank around yes included, is no. The agent
# writes yes or no.
$ for v in yes YES Yes yEs no 1 true '' y yess ' yes' 'yes '; do
>   echo "ONBOOT='$v'" > flag.conf && ktrctl --verbose --as-agent set flag.conf NAME=ct &&
>   echo "'$v' => $(grep ONBOOT flag.conf)"
> done
'yes' => ONBOOT="yes"
'YES' => ONBOOT="yes"
'Yes' => ONBOOT="yes"
'yEs' => ONBOOT="yes"
'no' => ONBOOT="no"
'1' => ONBOOT="no"
'true' => ONBOOT="no"
'' => ONBOOT="no"
'y' => ONBOOT="no"
'yess' => ONBOOT="no"
' yes' => ONBOOT="no"
'yes ' => ONBOOT="no"

# Each line alone, and what the agent writes in its place. Texts keep their value, an empty
# VE_ROOT included; a platform and a disk are written back as read. A NAMESERVER list is split
# at blanks and joined with one space, in order and repeats kept; a network part, "dhcp" and a
# word that is no address stay as written. NETIF items are joined with ";" (the rest of NETIF is
# read-devices.t's). FEATURES are written sorted by name, the first of a repeated name counting,
# ":" added to a bare name. ROLES are written sorted, without repeats; empty ROLES
# hold nothing and their line is left as it was.
$ for line in "VE_ROOT=''" "HOSTNAME='ct.example.com'" "PLATFORM='windows'" \
>     "DISK='image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={6f1ed002-ab5d-11d1-8e4c-00c04fd430c8}'" \
>     "NAMESERVER='10.0.0.5 10.0.0.5/24 10.0.0.5/255.255.255.0 fe80::1/64 dhcp not-an-ip'" \
>     "NAMESERVER='2.2.2.2 1.1.1.1 2.2.2.2'" "NAMESERVER='10.0.0.5/24 dhcp'" "NAMESERVER=''" \
>     "NETIF='ifname=eth0,network=,mac=,nettype=bridged,dhcp=yes ; ifname=eth1,network=,mac=,nettype=bridged,dhcp=no'" \
>     "FEATURES='a:on b:off'" "FEATURES='b:off a:on'" "FEATURES='a:1 a:2'" "FEATURES='bare'" "FEATURES='a:b:c'" \
>     "ROLES='web  db web'" "ROLES=''"; do
>   echo "$line" > one.conf && ktrctl --verbose --as-agent set one.conf NAME=ct &&
>   echo "$line => $(grep "^${line%%=*}=" one.conf)"
> done
VE_ROOT='' => VE_ROOT=""
HOSTNAME='ct.example.com' => HOSTNAME="ct.example.com"
PLATFORM='windows' => PLATFORM="windows"
DISK='image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={6f1ed002-ab5d-11d1-8e4c-00c04fd430c8}' => DISK="image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={6f1ed002-ab5d-11d1-8e4c-00c04fd430c8}"
NAMESERVER='10.0.0.5 10.0.0.5/24 10.0.0.5/255.255.255.0 fe80::1/64 dhcp not-an-ip' => NAMESERVER="10.0.0.5 10.0.0.5/24 10.0.0.5/255.255.255.0 fe80::1/64 dhcp not-an-ip"
NAMESERVER='2.2.2.2 1.1.1.1 2.2.2.2' => NAMESERVER="2.2.2.2 1.1.1.1 2.2.2.2"
NAMESERVER='10.0.0.5/24 dhcp' => NAMESERVER="10.0.0.5/24 dhcp"
NAMESERVER='' => NAMESERVER=""
NETIF='ifname=eth0,network=,mac=,nettype=bridged,dhcp=yes ; ifname=eth1,network=,mac=,nettype=bridged,dhcp=no' => NETIF="ifname=eth0,network=,mac=,nettype=bridged,dhcp=yes;ifname=eth1,network=,mac=,nettype=bridged,dhcp=no"
FEATURES='a:on b:off' => FEATURES="a:on b:off"
FEATURES='b:off a:on' => FEATURES="a:on b:off"
FEATURES='a:1 a:2' => FEATURES="a:1"
FEATURES='bare' => FEATURES="bare:"
FEATURES='a:b:c' => FEATURES="a:b:c"
ROLES='web  db web' => ROLES="db web"
ROLES='' => ROLES=''

# An empty HOSTNAME unsets the name, an earlier line's too: the record has no name and the agent
# leaves the lines as they are.
$ printf "HOSTNAME='ct.example.com'\nHOSTNAME=''\n" > host.conf && ktrctl read host.conf | grep -c hostname
0
(exit 1)

$ ktrctl --verbose --as-agent set host.conf NAME=ct && cat host.conf
HOSTNAME='ct.example.com'
HOSTNAME=''
IP_ADDRESS=""
NAME="ct"
NETIF=""

# A file that sets none of these keys gets none of them written (only the addresses and devices
# the agent always writes).
$ echo '# nothing set' > none.conf && ktrctl --verbose --as-agent set none.conf NAME=ct && cat none.conf
# nothing set
IP_ADDRESS=""
NAME="ct"
NETIF=""

# ARCH: x86 in any letter case is held as i386, and i386 in any letter case is written as x86;
# other names, a trailing blank included, are held and written as they stand.
$ for v in x86 X86 x86_64 i386 I386 ia64 '' 'x86 '; do
>   echo "ARCH='$v'" > arch.conf && held=$(ktrctl read arch.conf | grep -o '<architecture.*') &&
>   ktrctl --verbose --as-agent set arch.conf NAME=ct && echo "'$v' => $held $(grep ARCH arch.conf)"
> done
'x86' => <architecture>i386</architecture> ARCH="x86"
'X86' => <architecture>i386</architecture> ARCH="x86"
'x86_64' => <architecture>x86_64</architecture> ARCH="x86_64"
'i386' => <architecture>i386</architecture> ARCH="x86"
'I386' => <architecture>I386</architecture> ARCH="x86"
'ia64' => <architecture>ia64</architecture> ARCH="ia64"
'' => <architecture/> ARCH=""
'x86 ' => <architecture>x86 </architecture> ARCH="x86 "

# TECHNOLOGIES gives the architecture: its first word that names one, none without such a word.
# The list itself is never written back.
$ for v in 'hqfs x86_64' 'x86 x86_64' 'hqfs  nptl' ''; do
>   echo "TECHNOLOGIES='$v'" > tech.conf && ktrctl read tech.conf | grep -o '<architecture.*'
>   ktrctl --verbose --as-agent set tech.conf NAME=ct && grep -e TECHNOLOGIES -e ARCH tech.conf
> done
<architecture>x86_64</architecture>
TECHNOLOGIES='hqfs x86_64'
ARCH="x86_64"
<architecture>i386</architecture>
TECHNOLOGIES='x86 x86_64'
ARCH="x86"
TECHNOLOGIES='hqfs  nptl'
TECHNOLOGIES=''

# With both, the later line gives the architecture; a TECHNOLOGIES list naming none leaves ARCH's.
$ for text in 'TECHNOLOGIES="x86_64"\nARCH=ia64' 'ARCH=ia64\nTECHNOLOGIES="nptl x86 x86_64"' \
>     'ARCH=ia64\nTECHNOLOGIES="nptl"'; do
>   printf "$text\n" > both.conf && ktrctl --verbose --as-agent set both.conf NAME=ct && grep ARCH both.conf
> done
ARCH="ia64"
ARCH="x86"
ARCH="ia64"

# Resource values, by the format the vocabulary gives each: NUMPROC is barrier:limit (a single
# number is the limit alone), CPUWEIGHT a whole number, CPULIMIT a percentage held in hundredths
# (read in single precision and cut). A number is read as far as it goes, a text without one
# reads as 0 and a number too big saturates; the agent writes the value it holds.
$ for line in "NUMPROC='100:200'" "NUMPROC='300'" "NUMPROC=' 5 : 7'" "NUMPROC=':5'" "NUMPROC='abc:def'" \
>     "NUMPROC='1:2:3'" "NUMPROC='-1:9223372036854775807'" "NUMPROC='99999999999999999999:-99999999999999999999'" \
>     "CPUWEIGHT='42xyz'" "CPUWEIGHT='4:5'" "CPUWEIGHT=''" "CPUWEIGHT='+7'" \
>     "CPULIMIT='12.5'" "CPULIMIT='100'" "CPULIMIT='abc'" "CPULIMIT='-1.5'" "CPULIMIT='0.29'" "CPULIMIT='0.07'" \
>     "CPULIMIT='12.5%'" "CPULIMIT='1e50'" "CPULIMIT='-1e50'" "CPULIMIT='nan'"; do
>   echo "$line" > res.conf && held=$(ktrctl read res.conf | sed -nE 's/^ *<(barrier|limit)>(.*)<.*/\1 \2/p') &&
>   ktrctl --verbose --as-agent set res.conf NAME=ct && echo "$line =>" $held "=> $(grep "^${line%%=*}=" res.conf)"
> done
NUMPROC='100:200' => barrier 100 limit 200 => NUMPROC="100:200"
NUMPROC='300' => limit 300 => NUMPROC="300"
NUMPROC=' 5 : 7' => barrier 5 limit 7 => NUMPROC="5:7"
NUMPROC=':5' => barrier 0 limit 5 => NUMPROC="0:5"
NUMPROC='abc:def' => barrier 0 limit 0 => NUMPROC="0:0"
NUMPROC='1:2:3' => barrier 1 limit 2 => NUMPROC="1:2"
NUMPROC='-1:9223372036854775807' => barrier -1 limit 9223372036854775807 => NUMPROC="-1:9223372036854775807"
NUMPROC='99999999999999999999:-99999999999999999999' => barrier 9223372036854775807 limit -9223372036854775808 => NUMPROC="9223372036854775807:-9223372036854775808"
CPUWEIGHT='42xyz' => limit 42 => CPUWEIGHT="42"
CPUWEIGHT='4:5' => limit 4 => CPUWEIGHT="4"
CPUWEIGHT='' => limit 0 => CPUWEIGHT="0"
CPUWEIGHT='+7' => limit 7 => CPUWEIGHT="7"
CPULIMIT='12.5' => limit 1250 => CPULIMIT="12.5"
CPULIMIT='100' => limit 10000 => CPULIMIT="100"
CPULIMIT='abc' => limit 0 => CPULIMIT="0"
CPULIMIT='-1.5' => limit -150 => CPULIMIT="-1.5"
CPULIMIT='0.29' => limit 28 => CPULIMIT="0.28"
CPULIMIT='0.07' => limit 7 => CPULIMIT="0.07"
CPULIMIT='12.5%' => limit 1250 => CPULIMIT="12.5"
CPULIMIT='1e50' => limit 9223372036854775807 => CPULIMIT="92233720368547760"
CPULIMIT='-1e50' => limit -9223372036854775808 => CPULIMIT="-92233720368547760"
CPULIMIT='nan' => limit 0 => CPULIMIT="0"

# Without a venet0 in NETIF the record gets one, host-routed, with the addresses of IP_ADDRESS and
# the servers of NAMESERVER.
$ printf 'IP_ADDRESS="10.0.0.5/24 10.0.0.6"\nNAMESERVER="1.1.1.1 8.8.8.8"\n' > venet.conf &&
> ktrctl read venet.conf | sed -n '/<ktr:net_device/,/<\/ktr:net_device>/p'
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>venet0</ktr:ifname>
    <ktr:address>10.0.0.5/24</ktr:address>
    <ktr:address>10.0.0.6</ktr:address>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
    <ktr:server_address>1.1.1.1</ktr:server_address>
    <ktr:server_address>8.8.8.8</ktr:server_address>
    <ktr:host_routed/>
  </ktr:net_device>

# "dhcp" among the addresses makes that venet0 take its address by DHCP, with no fixed one; it
# comes after the devices of NETIF.
$ printf 'IP_ADDRESS="10.0.0.5/24 dhcp 10.0.0.6"\nNETIF="ifname=eth0,network=,mac=,nettype=bridged,ip=10.9.9.9,dhcp=no"\n' > dhcp.conf &&
> ktrctl read dhcp.conf | sed -n '/<ktr:net_device/,/<\/ktr:net_device>/p'
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth0</ktr:ifname>
    <ktr:address>10.9.9.9</ktr:address>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>venet0</ktr:ifname>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>1</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
    <ktr:host_routed/>
  </ktr:net_device>

# A venet0 in NETIF is the record's own and no second one is made. The first host-routed device
# holds the addresses the agent writes as IP_ADDRESS, whatever IP_ADDRESS said.
$ printf 'IP_ADDRESS="1.2.3.4"\nNETIF="%s;%s;%s"\n' 'ifname=eth0,network=,mac=,nettype=bridged,ip=10.9.9.9,dhcp=no' \
>     'ifname=venet0,nettype=host-routed,ip=10.0.0.1:10.0.0.2/16' \
>     'ifname=venet1,network=,mac=,nettype=host-routed,ip=10.0.0.3,dhcp=no' > routed.conf &&
> ktrctl read routed.conf | grep -e '<ktr:ifname>' -e '<address>'
    <ktr:ifname>eth0</ktr:ifname>
    <ktr:ifname>venet0</ktr:ifname>
    <ktr:ifname>venet1</ktr:ifname>
  <address>1.2.3.4</address>

$ ktrctl --as-agent set routed.conf NAME=ct && cat routed.conf
IP_ADDRESS="10.0.0.1 10.0.0.2/16"
NETIF="ifname=eth0,network=,mac=,nettype=bridged,ip=10.9.9.9,dhcp=no;ifname=venet1,network=,mac=,nettype=host-routed,ip=10.0.0.3,dhcp=no"
NAME="ct"

# diff lists every key whose written value changes, in the agent's key order: the first resource
# of the vocabulary, then the other keys by name, then the other resources. A key the new file
# lacks is not a change the agent writes: diff adds it as an unset.
$ printf 'ONBOOT=yes\nHOSTNAME=ct\nNUMPROC=1:2\nCPULIMIT=50\nIP_ADDRESS=10.0.0.1\n' > old.conf &&
> cp old.conf same.conf && ktrctl diff old.conf same.conf

$ printf 'AVNUMPROC=5\nONBOOT=yes\nCPULIMIT=25\nNUMPROC=1:3\nIP_ADDRESS="10.0.0.1 10.0.0.2"\nCPUWEIGHT=10\nROLES=web\n' > new.conf &&
> ktrctl diff old.conf new.conf
AVNUMPROC="5"
IP_ADDRESS="10.0.0.1 10.0.0.2"
ROLES="web"
CPULIMIT="25"
CPUWEIGHT="10"
NUMPROC="1:3"
unset HOSTNAME
(exit 1)

# The addresses compared are those of venet0.
$ cp old.conf moved.conf && echo 'NETIF="ifname=venet0,nettype=host-routed,ip=10.0.0.9"' >> moved.conf &&
> ktrctl diff old.conf moved.conf
IP_ADDRESS="10.0.0.9"
(exit 1)
