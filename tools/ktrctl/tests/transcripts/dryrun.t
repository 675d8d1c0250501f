# --dry-run prints the change set would make and leaves the file; --as-agent writes the whole
# record as the agent does, its own keys included.

$ printf '# c\nVE_PRIVATE='\''/p/$VEID'\''\nHOSTNAME="a"\nNUMPROC="1:2"' > c.conf && cp c.conf c.before

$ ktrctl set --dry-run c.conf HOSTNAME=b NAME=n && cmp c.before c.conf
--- c.conf
+++ c.conf
@@ -3,2 +3,2 @@
-HOSTNAME="a"
-NUMPROC="1:2"
\ No newline at end of file
+HOSTNAME="b"
+NUMPROC="1:2"
@@ -4,0 +5,1 @@
+NAME="n"

$ ktrctl set --as-agent c.conf HOSTNAME=b && cat c.conf
# c
VE_PRIVATE="/p/$VEID"
HOSTNAME="b"
NUMPROC="1:2"
IP_ADDRESS=""
NETIF=""
