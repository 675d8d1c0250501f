# What the NETIF and DISK values of a container file read as (the network devices and the disk
# list of read's message) and what the agent writes back for them.

# NETIF holds network devices apart by ";", each as "name=value" pieces apart by ",". The agent
# writes a device as ifname, network, mac and nettype always, then the gateways it has, the IPv4
# addresses after "ip=" apart by ":" (a word that is no address among them), dhcp, dhcp6 only
# when on, and last the IPv6 addresses after "ip6=", each followed by ",". Blanks inside values
# stay. Text in that form reads back as the same device.
$ cat > devices <<'END'
> ifname=eth0,network=,mac=02:00:00:00:00:01,nettype=bridged,gw=10.0.0.1,ip=10.0.0.5/24:10.0.0.6/24,dhcp=no,ip6=2001:db8::5/64,
> ifname=eth1,network=net1,mac=,nettype=bridged,gw6=fe80::ffff,dhcp=no,dhcp6=yes,ip6=2001:db8::5/64,fe80::1,
> ifname=eth2,network=Bridged,mac=m,nettype=bridged,gw=10.0.0.1,gw6=2001:db8::1,ip=10.0.0.5/255.255.255.0:192.168.1.1,dhcp=no
> ifname=eth3,network=,mac=,nettype=host-routed,dhcp=yes,dhcp6=yes
> ifname=venet0,network=,mac=,nettype=bridged,ip=10.0.0.7,dhcp=no
> ifname= eth4 ,network=n ,mac=aa:bb ,nettype=bridged,dhcp=no
> ifname=venet1,network=,mac=,nettype=host-routed,dhcp=no
> ifname=eth5,network=,mac=,nettype=bridged,ip=dhcp:10.0.0.1,dhcp=no
> END
> printf 'NETIF="%s"\n' "$(paste -sd';' devices)" > n.conf

$ ktrctl read n.conf | sed -n '/<ktr:net_device/,/<\/ktr:net_device>/p'
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth0</ktr:ifname>
    <ktr:address>10.0.0.5/24</ktr:address>
    <ktr:address>10.0.0.6/24</ktr:address>
    <ktr:address>2001:db8::5/64</ktr:address>
    <ktr:network/>
    <ktr:gateway>10.0.0.1</ktr:gateway>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac>02:00:00:00:00:01</ktr:mac>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth1</ktr:ifname>
    <ktr:address>2001:db8::5/64</ktr:address>
    <ktr:address>fe80::1</ktr:address>
    <ktr:network>net1</ktr:network>
    <ktr:gateway/>
    <ktr:gateway6>fe80::ffff</ktr:gateway6>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>1</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth2</ktr:ifname>
    <ktr:address>10.0.0.5/255.255.255.0</ktr:address>
    <ktr:address>192.168.1.1</ktr:address>
    <ktr:network>Bridged</ktr:network>
    <ktr:gateway>10.0.0.1</ktr:gateway>
    <ktr:gateway6>2001:db8::1</ktr:gateway6>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac>m</ktr:mac>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth3</ktr:ifname>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>1</ktr:dhcp>
    <ktr:dhcp6>1</ktr:dhcp6>
    <ktr:mac/>
    <ktr:host_routed/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>venet0</ktr:ifname>
    <ktr:address>10.0.0.7</ktr:address>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname> eth4 </ktr:ifname>
    <ktr:network>n </ktr:network>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac>aa:bb </ktr:mac>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>venet1</ktr:ifname>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
    <ktr:host_routed/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth5</ktr:ifname>
    <ktr:address>dhcp</ktr:address>
    <ktr:address>10.0.0.1</ktr:address>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>

# The agent's rewrite leaves that NETIF line as it is: only the key set and IP_ADDRESS are added.
$ ktrctl --as-agent --dry-run set n.conf HOSTNAME=ct
--- n.conf
+++ n.conf
@@ -1,0 +2,2 @@
+HOSTNAME="ct"
+IP_ADDRESS=""

# With DHCP on, a device's addresses are not written. A host-routed venet0 is not written at all:
# its addresses go to IP_ADDRESS.
$ printf 'NETIF="ifname=eth0,ip=10.0.0.5,dhcp=yes,ip6=fe80::1;ifname=venet0,nettype=host-routed,ip=10.0.0.7"\n' > w.conf &&
> ktrctl read w.conf | sed -n '/<ktr:net_device/,/<\/ktr:net_device>/p'
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth0</ktr:ifname>
    <ktr:address>10.0.0.5</ktr:address>
    <ktr:address>fe80::1</ktr:address>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>1</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>venet0</ktr:ifname>
    <ktr:address>10.0.0.7</ktr:address>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
    <ktr:host_routed/>
  </ktr:net_device>

$ ktrctl --as-agent --dry-run set w.conf HOSTNAME=ct
--- w.conf
+++ w.conf
@@ -1,1 +1,1 @@
-NETIF="ifname=eth0,ip=10.0.0.5,dhcp=yes,ip6=fe80::1;ifname=venet0,nettype=host-routed,ip=10.0.0.7"
+NETIF="ifname=eth0,network=,mac=,nettype=bridged,dhcp=yes"
@@ -1,0 +2,2 @@
+HOSTNAME="ct"
+IP_ADDRESS="10.0.0.7"

# Reading a device's text, in the order the devices below are given:
# - the pieces may come in any order; "ip=" splits at every ":", so an IPv6 address falls apart
#   there;
# - everything after "ip6=" is an IPv6 address, later pieces (here "dhcp=no") included; empty
#   pieces are skipped and blanks around an address dropped;
# - blanks before a piece are dropped, blanks after one and after "=" stay;
# - dhcp, dhcp6 and nettype=host-routed are on for any leading part of the word, the empty value
#   included, and off for anything else;
# - of a piece given twice the last counts; unknown and misspelt names are skipped.
# A device is kept only with a name (ifname); the last device is the venet0 the agent adds for
# IP_ADDRESS when NETIF names none.
$ printf 'NETIF="%s"\n' "$(printf '%b\n' \
>     'ifname=eth0,mac=m,network=n,gw=g,gw6=g6,nettype=bridged,ip=10.0.0.1/8:10.0.0.2,dhcp=no,dhcp6=no' \
>     'ifname=v4list,ip=fe80::1:' \
>     'ifname=eth1,ip6=a::1/64,b::2/64,dhcp=no' \
>     'ifname=v6list,ip6=,,a::1, b::2' \
>     '  \tifname=eth1 , \tmac= x' \
>     'ifname=on1,dhcp=,dhcp6=y,nettype=host' \
>     'ifname=on2,dhcp=ye,dhcp6=yes,nettype=host-routed' \
>     'ifname=off1,dhcp=yess,dhcp6=Yes,nettype=host-routedx' \
>     'ifname=off2,dhcp=no,dhcp6=1,nettype=bridged' \
>     'ifname=a,IFNAME=b,ifname,foo=bar,ifname=c,,' | paste -sd';')" > r.conf &&
> ktrctl read r.conf | sed -n '/<ktr:net_device/,/<\/ktr:net_device>/p'
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth0</ktr:ifname>
    <ktr:address>10.0.0.1/8</ktr:address>
    <ktr:address>10.0.0.2</ktr:address>
    <ktr:network>n</ktr:network>
    <ktr:gateway>g</ktr:gateway>
    <ktr:gateway6>g6</ktr:gateway6>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac>m</ktr:mac>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>v4list</ktr:ifname>
    <ktr:address>fe80</ktr:address>
    <ktr:address>1</ktr:address>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth1</ktr:ifname>
    <ktr:address>a::1/64</ktr:address>
    <ktr:address>b::2/64</ktr:address>
    <ktr:address>dhcp=no</ktr:address>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>v6list</ktr:ifname>
    <ktr:address>a::1</ktr:address>
    <ktr:address>b::2</ktr:address>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>eth1 </ktr:ifname>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac> x</ktr:mac>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>on1</ktr:ifname>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>1</ktr:dhcp>
    <ktr:dhcp6>1</ktr:dhcp6>
    <ktr:mac/>
    <ktr:host_routed/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>on2</ktr:ifname>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>1</ktr:dhcp>
    <ktr:dhcp6>1</ktr:dhcp6>
    <ktr:mac/>
    <ktr:host_routed/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>off1</ktr:ifname>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>off2</ktr:ifname>
    <ktr:network/>
    <ktr:gateway/>
    <ktr:gateway6/>
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
  </ktr:net_device>
  <ktr:net_device xsi:type="ktr:net_vethType">
    <ktr:ifname>c</ktr:ifname>
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
    <ktr:dhcp>0</ktr:dhcp>
    <ktr:dhcp6>0</ktr:dhcp6>
    <ktr:mac/>
    <ktr:host_routed/>
  </ktr:net_device>

# DISK holds image disks apart by ";", each as "image=...,size=...,uuid={...}", the names always
# in that order. Each disk reads as a disk entry: the uuid as its name (none for the empty uuid),
# the image as its path, the size, and "expanded". The agent writes the value back as it stood.
$ printf 'DISK="%s;%s"\n' \
>     'image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={00112233-4455-6677-8899-aabbccddeeff}' \
>     'image=/var/lib/quellix/private/101/data.img,size=2048,uuid={00000000-0000-0000-0000-000000000000}' > d.conf &&
> ktrctl read d.conf | sed -n '/<disk_list/,/<\/disk_list>/p'
  <disk_list xsi:type="ktr:ct_dromo_disk">
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:name>00112233-4455-6677-8899-aabbccddeeff</ktr:name>
      <ktr:path>/var/lib/quellix/private/101/disk.img</ktr:path>
      <ktr:size>1048576</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:path>/var/lib/quellix/private/101/data.img</ktr:path>
      <ktr:size>2048</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
  </disk_list>

$ ktrctl --as-agent --dry-run set d.conf HOSTNAME=ct
--- d.conf
+++ d.conf
@@ -1,0 +2,3 @@
+HOSTNAME="ct"
+IP_ADDRESS=""
+NETIF=""

# Blanks around the disks and empty items are dropped: this value reads, and is written, as the
# one above.
$ printf 'DISK="  %s ;\t%s ;; "\n' \
>     'image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={00112233-4455-6677-8899-aabbccddeeff}' \
>     'image=/var/lib/quellix/private/101/data.img,size=2048,uuid={00000000-0000-0000-0000-000000000000}' > spaced.conf &&
> ktrctl read d.conf > d.xml && ktrctl read spaced.conf | diff d.xml - && ktrctl diff d.conf spaced.conf

# Reading a disk's text, in the order the disks below are given: the names may come in any
# order, blanks around a piece are dropped, the uuid may lack its braces; a value ends at its
# first blank; of a name given twice the first counts; other names are skipped.
$ printf 'DISK="%s"\n' "$(printf '%b\n' \
>     'image=/a.img,size=10,uuid={00112233-4455-6677-8899-aabbccddeeff}' \
>     'uuid={00112233-4455-6677-8899-aabbccddeeff},size=10,image=/a.img' \
>     '  image=/a.img ,\tsize=10 , uuid={00112233-4455-6677-8899-aabbccddeeff}  ' \
>     'image=/a.img,size=10,uuid=00112233-4455-6677-8899-aabbccddeeff' \
>     'image=/my disk.img,size=10' \
>     'image=/a.img,size=10,size=20' \
>     'image=/a.img,size=10,expanded=no' \
>     'image=/l.img,size=9223372036854775807' | paste -sd';')" > rows.conf &&
> ktrctl read rows.conf | sed -n '/<disk_list/,/<\/disk_list>/p'
  <disk_list xsi:type="ktr:ct_dromo_disk">
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:name>00112233-4455-6677-8899-aabbccddeeff</ktr:name>
      <ktr:path>/a.img</ktr:path>
      <ktr:size>10</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:name>00112233-4455-6677-8899-aabbccddeeff</ktr:name>
      <ktr:path>/a.img</ktr:path>
      <ktr:size>10</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:name>00112233-4455-6677-8899-aabbccddeeff</ktr:name>
      <ktr:path>/a.img</ktr:path>
      <ktr:size>10</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:name>00112233-4455-6677-8899-aabbccddeeff</ktr:name>
      <ktr:path>/a.img</ktr:path>
      <ktr:size>10</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:path>/my</ktr:path>
      <ktr:size>10</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:path>/a.img</ktr:path>
      <ktr:size>10</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:path>/a.img</ktr:path>
      <ktr:size>10</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
    <ktr:disk_entry xsi:type="ktr:ct_dromo_disk">
      <ktr:path>/l.img</ktr:path>
      <ktr:size>9223372036854775807</ktr:size>
      <ktr:expanded/>
    </ktr:disk_entry>
  </disk_list>

# What the agent writes for those disks, one a line here.
$ ktrctl --as-agent --dry-run set rows.conf HOSTNAME=ct | sed -n 's/^+DISK="\(.*\)"$/\1/p' | tr ';' '\n'
image=/a.img,size=10,uuid={00112233-4455-6677-8899-aabbccddeeff}
image=/a.img,size=10,uuid={00112233-4455-6677-8899-aabbccddeeff}
image=/a.img,size=10,uuid={00112233-4455-6677-8899-aabbccddeeff}
image=/a.img,size=10,uuid={00112233-4455-6677-8899-aabbccddeeff}
image=/my,size=10,uuid={00000000-0000-0000-0000-000000000000}
image=/a.img,size=10,uuid={00000000-0000-0000-0000-000000000000}
image=/a.img,size=10,uuid={00000000-0000-0000-0000-000000000000}
image=/l.img,size=9223372036854775807,uuid={00000000-0000-0000-0000-000000000000}

# A blank DISK value gives no disk list: the read skips the key.
$ printf 'DISK=" ; ;\t"\n' > blank.conf && ktrctl --verbose read blank.conf > /dev/null
ktrctl: blank.conf: value not taken for key DISK (skipped)
