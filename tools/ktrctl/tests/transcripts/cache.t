# cache works on template.cache in the uploads folder (here the transcript's folder). Inspection
# needs the file and never makes it; reset makes it anew.

$ ktrctl cache stat
ktrctl: can't read cache {dir}/template.cache: can't open {dir}/template.cache: No such file or directory
(exit 2)

$ ktrctl cache check
ktrctl: can't read cache {dir}/template.cache: can't open {dir}/template.cache: No such file or directory
(exit 2)

$ ls && : > template.cache && ktrctl cache check
conflicts
containers
node.conf
ktrctl: can't read cache {dir}/template.cache: can't map {dir}/template.cache: the file is empty or can't be read
(exit 2)

$ ktrctl cache reset
{dir}/template.cache: made anew, 0 entries

$ ktrctl cache stat template.cache
path: template.cache
file size: 8192
magic: 0xcacefe03
header size: 77
key size: 256
version: 0xff01
value layout: 24
aux: 1
valid: 1
heap total: 8192
heap used: 384
heap lower bound: 80
heap free: 7808
free blocks: 1
blocks: 2
entries: 0
snapshot capacity: 1
snapshot references: 1
unreachable bytes: 0
problems: 0

$ ktrctl cache check
{dir}/template.cache: ok, 0 entries, 384 of 8192 heap bytes used

# damage OFFSET BYTES: a new cache with BYTES (printf's octal escapes, low byte first) written at
# OFFSET. Inspecting it reports the damage and changes no byte; reset then repairs it.
$ cat > damage <<'END'
> ktrctl cache reset > /dev/null && printf "$2" | dd of=template.cache bs=1 seek=$1 conv=notrunc 2> /dev/null
> cp template.cache before && ktrctl cache check
> echo "check: exit $?" && ktrctl cache stat > stat && grep '^problems' stat && cmp before template.cache &&
> ktrctl cache reset > /dev/null && ktrctl cache check > /dev/null
> END

$ sh damage 49 '\170\126\064\022'
{dir}/template.cache: header refused with code -12
check: exit 1
problems: 1

$ sh damage 73 '\0\0\0\0'
{dir}/template.cache: header refused with code -14
check: exit 1
problems: 1

$ sh damage 69 '\7\0\0\0'
{dir}/template.cache: aux field is 7, not 1
check: exit 1
problems: 1

$ sh damage 24 '\0\0\0\100\0\0\0\0'
{dir}/template.cache: heap total 1073741824 is misaligned, below the lower bound or beyond the 8192 mapped bytes
check: exit 1
problems: 1

$ sh damage 88 '\5\0\0\0\0\0\0\0'
{dir}/template.cache: used bytes plus free bytes (464) differ from the total (8192)
check: exit 1
problems: 1

$ sh damage 44 '\113'
{dir}/template.cache: snapshot pointer does not lead to an allocated block
check: exit 1
problems: 1

$ for args in '' bogus 'stat a b' 'reset a b'; do
>   ktrctl cache $args; test $? = 2 || echo "cache $args: not refused"
> done
ktrctl: usage: ktrctl cache stat [PATH] | cache check [PATH] | cache reset [PATH]
ktrctl: usage: ktrctl cache stat [PATH] | cache check [PATH] | cache reset [PATH]
ktrctl: usage: ktrctl cache stat [PATH] | cache check [PATH] | cache reset [PATH]
ktrctl: usage: ktrctl cache stat [PATH] | cache check [PATH] | cache reset [PATH]
