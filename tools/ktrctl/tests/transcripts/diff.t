# diff prints the assignments that turn the first file into the second; read prints the record
# the agent would load, and refuses a file it cannot read whole.

$ printf 'HOSTNAME="a"\nNAME="n"\nONBOOT="yes"\n' > a.conf && printf 'HOSTNAME="b"\nONBOOT="yes"\n' > b.conf

$ ktrctl diff a.conf a.conf

$ ktrctl diff a.conf b.conf
HOSTNAME="b"
unset NAME
(exit 1)

$ printf 'A="1"\n  NAME="open\nB=2\n' > open.conf && ktrctl read open.conf
ktrctl: open.conf: line 2: value of NAME is not closed on its line
(exit 2)

$ printf 'HOSTNAME="caf\351"\n' > latin1.conf && ktrctl read latin1.conf
ktrctl: latin1.conf: line 1: the value of HOSTNAME holds bytes that XML cannot carry (not UTF-8 text, or control characters)
(exit 2)

# Only well-formed UTF-8 reaches the XML: U+D7FF, U+E000 and U+10FFFF pass; surrogates, an
# overlong form, U+110000, U+FFFE and a cut sequence do not; of the control characters, a tab
# passes and the others do not.
$ for v in '\355\237\277' '\355\240\200' '\355\277\277' '\356\200\200' '\300\200' '\364\217\277\277' \
>          '\364\220\200\200' '\357\277\276' '\303' '\011' '\001' '\037'; do
>   printf "HOSTNAME=\"a$v\"\n" > u.conf; ktrctl read u.conf > /dev/null 2>&1; printf '%s ' $?
> done; echo
0 2 2 0 2 0 2 2 2 0 2 2 

$ ktrctl --vocab absent.xml read a.conf
ktrctl: absent.xml: can not open: No such file or directory
(exit 2)

$ ktrctl read containers/101.conf > 101.xml && sed -n 2,3p 101.xml
<ktr:venv_config xmlns:ktr="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:type="ktr:venv_configType">
  <ktr:ve_root>/var/lib/quellix/root/$VEID</ktr:ve_root>
