# check over a node of 40 containers made from 101.conf, each with its own hostname, addresses,
# MAC, disk image and UUID: nothing to report.

$ mkdir node && for id in $(seq 40); do
>   at=$((id / 250)).$((id % 250 + 1)) uuid=$(printf 00000000-0000-4000-8000-%012d $id)
>   mac=$(printf 02:00:00:00:%02x:%02x $((id / 256)) $((id % 256)))
>   sed -e "s|^HOSTNAME=.*|HOSTNAME=\"ct$id.example.test\"|" \
>       -e "s|^IP_ADDRESS=.*|IP_ADDRESS=\"10.1.$at/16 fd00::$id/64\"|" \
>       -e "s|^NETIF=.*|NETIF=\"ifname=eth0,mac=$mac,ip=192.168.$at/16\"|" \
>       -e "s|^DISK=.*|DISK=\"image=/var/lib/quellix/private/$id/disk.img,size=1048576,uuid={$uuid}\"|" \
>       -e "s|^UUID=.*|UUID=\"$uuid\"|" containers/101.conf > node/$((100 + id)).conf
> done && ktrctl check node

# Each kind of shared value planted between two of them (copy FROM TO KEY copies the line), a
# private area naming another container, a line bash computes and a key assigned again: each
# found once, at the later file, with the place it is first used.
$ copy() { sed -i "s|^$3=.*|$(grep "^$3=" node/$1.conf)|" node/$2.conf; }
> copy 103 107 HOSTNAME && copy 104 109 UUID && copy 105 112 DISK && copy 106 120 NETIF &&
> copy 108 130 IP_ADDRESS && sed -i 's|^VE_PRIVATE=.*|VE_PRIVATE="/var/lib/quellix/private/101"|' node/135.conf &&
> printf 'echo "$(id)"\nHOSTNAME="late.example.test"\n' >> node/135.conf && ktrctl check node
node/107.conf:51: hostname ct3.example.test is also used by node/103.conf:51
node/109.conf:62: UUID 00000000-0000-4000-8000-000000000004 is also used by node/104.conf:62
node/112.conf:61: disk image /var/lib/quellix/private/5/disk.img is also used by node/105.conf:61
node/120.conf:60: IPv4 address 192.168.0.7 is also used by node/106.conf:60
node/120.conf:60: MAC address 02:00:00:00:00:06 is also used by node/106.conf:60
node/130.conf:54: IPv4 address 10.1.0.9 is also used by node/108.conf:54
node/130.conf:54: IPv6 address fd00::8 is also used by node/108.conf:54
node/135.conf:48: private area /var/lib/quellix/private/101 is also used by node/101.conf:48
node/135.conf:64: not a readable assignment
node/135.conf:65: HOSTNAME is assigned again (first on line 51)
(exit 1)

# A UUID is the same in braces.
$ sed -i 's|^UUID=.*|UUID="{00000000-0000-4000-8000-000000000010}"|' node/140.conf && ktrctl check node | grep UUID
node/109.conf:62: UUID 00000000-0000-4000-8000-000000000004 is also used by node/104.conf:62
node/140.conf:62: UUID 00000000-0000-4000-8000-000000000010 is also used by node/110.conf:62

# A value the agent would read as something else is reported on its line: a NETIF item taking
# its address by DHCP drops the fixed one, and an item without a name is no device at all.
$ cp containers/101.conf lossy.conf && for netif in 'ifname=eth1,dhcp=yes,ip=10.0.0.9/24' 'mac=02:00:00:00:00:01'; do
>   sed -i "s|^NETIF=.*|NETIF=\"$netif\"|" lossy.conf && ktrctl check lossy.conf
> done
lossy.conf:60: NETIF: the agent would read this as "ifname=eth1,network=,mac=,nettype=bridged,dhcp=yes"
lossy.conf:60: NETIF: the agent would read this as ""
(exit 1)

# A file whose resource values cannot be validated is reported at its first line.
$ printf 'HOSTNAME="bare.example.test"\n' > bare.conf && ktrctl check bare.conf
bare.conf:1: resource values cannot be validated: bare.conf: no resource values to validate
(exit 1)
