# How validate reads the formulas of a vocabulary, which values they see, and what a violation
# reports: "ID: FORMULA: PARAMETERS READ: MESSAGE", the parameters in the vocabulary's order.

# vocab FORMULA... writes a vocabulary with the resources a, b, c (barrier:limit), x (one value),
# y (a percentage), numproc, avnumproc and slmmemorylimit, in that order, and the formulas
# given, numbered from 1, each with the message "rule N". The script escapes <, > and & for
# the XML, so a formula here is the text the formula reader sees.
$ cat > vocab <<'END'
> r() { printf '<parameter><name>%s</name><value_type>%s</value_type><complexity>%s</complexity></parameter>' $1 $2 $3; }
> printf '<vocabulary><technology><name>quellix</name><category><name>qos</name>'
> r a 2 1; r b 2 1; r c 2 1; r x 1 1; r y 1 0; r numproc 2 1; r avnumproc 1 1; r slmmemorylimit 1 1
> printf '</category><category><name>tune</name>'
> n=0
> for f in "$@"; do
>   n=$((n + 1))
>   printf '<parameter><name>f%d</name><type>%d</type><formula>%s</formula><formula_info>rule %d</formula_info></parameter>' \
>     $n $n "$(printf '%s' "$f" | sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g')" $n
> done
> printf '</category></technology></vocabulary>\n'
> END
> printf 'A="10:20"\nB="15:30"\nC="5:5"\nX="3"\nY="0"\n' > c.conf

# A formula that does not parse makes the vocabulary unusable, naming the formula.
$ sh vocab '(a)' > v.xml && ktrctl --vocab v.xml validate c.conf
ktrctl: v.xml: invalid vocabulary: technology 'quellix', category 'tune', parameter 'f1': formula '(a)' does not parse
(exit 2)

# Parentheses are refused however they are placed, and so are operators without their
# operands, tokens outside the grammar (no "=", "||", "%", negative numbers or "_"; "&amp;" is
# not "&"), numbers past the kb and mb suffixes or too large, and names that are no resource
# or have no soft or hard part after their last dot. Names are matched with case.
$ for f in '(a)' '(a) b' 'a (b)' '(a + b) * c' '((a))' 'a + (b' 'a )' ') a' 'a ) b' '()' '(' \
>     '- a' 'a b' 'a +' '+' 'a >= >= b' '' '   ' 'a == 1 2' \
>     'a = b' 'a || b' 'a &amp;&amp; b' 'a >= -1' 'a % b' 'a_b' \
>     'a >= 3gb' 'a >= 12abc' 'a >= 2k' 'a >= 2kbx' 'a >= 1.2.3' 'a >= 1e30mb' 'a >= 99999999999999999999' \
>     'a.limit >= 1' 'a. >= 1' 'a.b.soft >= 1' 'unknown >= 1' 'A >= 1' 'qos.soft >= 0'; do
>   sh vocab "$f" > v.xml && ktrctl --vocab v.xml validate c.conf 2>&1 | sed 's/.*: formula /formula /'
> done
formula '(a)' does not parse
formula '(a) b' does not parse
formula 'a (b)' does not parse
formula '(a + b) * c' does not parse
formula '((a))' does not parse
formula 'a + (b' does not parse
formula 'a )' does not parse
formula ') a' does not parse
formula 'a ) b' does not parse
formula '()' does not parse
formula '(' does not parse
formula '- a' does not parse
formula 'a b' does not parse
formula 'a +' does not parse
formula '+' does not parse
formula 'a >= >= b' does not parse
formula '' does not parse
formula '   ' does not parse
formula 'a == 1 2' does not parse
formula 'a = b' does not parse
formula 'a || b' does not parse
formula 'a &amp;&amp; b' does not parse
formula 'a >= -1' does not parse
formula 'a % b' does not parse
formula 'a_b' does not parse
formula 'a >= 3gb' does not parse
formula 'a >= 12abc' does not parse
formula 'a >= 2k' does not parse
formula 'a >= 2kbx' does not parse
formula 'a >= 1.2.3' does not parse
formula 'a >= 1e30mb' does not parse
formula 'a >= 99999999999999999999' does not parse
formula 'a.limit >= 1' does not parse
formula 'a. >= 1' does not parse
formula 'a.b.soft >= 1' does not parse
formula 'unknown >= 1' does not parse
formula 'A >= 1' does not parse
formula 'qos.soft >= 0' does not parse

# A formula that holds prints nothing. Here: the limits compared, * before +, QOS on every
# resource the file sets (a, b, c, x, y: the others are skipped), a division by 0 giving 0.
$ for f in 'a.hard <= b.hard' 'a.soft + c.hard * x == 25' 'QOS.soft <= QOS.hard' 'QOS.hard <= b.hard' \
>     'a / y == 0'; do
>   sh vocab "$f" > v.xml && ktrctl --vocab v.xml validate c.conf
> done

# A violated formula names every parameter it read, even where && could have stopped early;
# with QOS, the resource it stood for besides the others read.
$ for f in 'a.hard > b.hard' 'a.soft + c.hard * x == 24' 'y && a' 'QOS.hard < b.hard' 'a / y >= 1'; do
>   sh vocab "$f" > v.xml && ktrctl --vocab v.xml validate c.conf
> done
1: a.hard > b.hard: a,b: rule 1
1: a.soft + c.hard * x == 24: a,c,x: rule 1
1: y && a: a,y: rule 1
1: QOS.hard < b.hard: b: rule 1
1: a / y >= 1: a,y: rule 1
(exit 1)

# A formula on QOS reports each resource that breaks it on a line of its own.
$ sh vocab 'QOS.soft <= QOS.hard' > v.xml && sed 's/10:20/21:20/; s/5:5/6:5/' c.conf > qos.conf &&
> ktrctl --vocab v.xml validate qos.conf
1: QOS.soft <= QOS.hard: a: rule 1
1: QOS.soft <= QOS.hard: c: rule 1
(exit 1)

# Arithmetic is on 64 bits and wraps around: two "unlimited" limits add up to a negative number.
$ sh vocab 'a.hard + b.hard > 0' > v.xml &&
> sed 's/"[0-9]*:[0-9]*"/"9223372036854775807:9223372036854775807"/' c.conf > big.conf &&
> ktrctl --vocab v.xml validate big.conf
1: a.hard + b.hard > 0: a,b: rule 1
(exit 1)

# A division by a negative value is an ordinary one.
$ sh vocab 'a / x == 0 - 10' > v.xml && sed 's/X="3"/X="-1"/' c.conf > minus.conf &&
> ktrctl --vocab v.xml validate minus.conf

# A formula on QOS skips the resources the file does not set; all formulas are checked, and
# only the violated ones reported.
$ sh vocab 'QOS.soft > QOS.hard' 'b.soft <= b.hard' > v.xml && printf 'B="1:2"\nX="1"\n' > bx.conf &&
> ktrctl --vocab v.xml validate bx.conf
1: QOS.soft > QOS.hard: b: rule 1
1: QOS.soft > QOS.hard: x: rule 1
(exit 1)

# From here on four formulas, as a container's resources would be checked.
$ sh vocab 'QOS.soft <= QOS.hard' 'b.hard >= a.hard' 'avnumproc.soft * 2 <= numproc.soft' 'a.soft > 0' > four.xml &&
> printf 'A="10:20"\nB="30:40"\nNUMPROC="100:200"\nAVNUMPROC="50"\n' > good.conf &&
> ktrctl --vocab four.xml validate good.conf

$ printf 'A="30:50"\nB="50:40"\nNUMPROC="100:200"\nAVNUMPROC="1"\n' > bad.conf &&
> ktrctl --vocab four.xml validate bad.conf
1: QOS.soft <= QOS.hard: b: rule 1
2: b.hard >= a.hard: a,b: rule 2
(exit 1)

# A resource without a barrier is seen with its limit as the barrier too (formula 4 wants a
# barrier above 0).
$ printf 'A="20"\nB="20"\nNUMPROC="100:200"\nAVNUMPROC="50"\n' > limits.conf &&
> ktrctl --vocab four.xml validate limits.conf

# avnumproc is seen as numproc halved, rounding down, whatever the file says: formula 3 holds
# whatever AVNUMPROC is, and for an odd numproc, small or large.
$ for values in 'NUMPROC="99:99"\nAVNUMPROC="9223372036854775807"' \
>     'NUMPROC="4611686018427387903:4611686018427387903"\nAVNUMPROC="1"'; do
>   printf "A=\"1:1\"\nB=\"1:1\"\n$values\n" > av.conf && ktrctl --vocab four.xml validate av.conf
> done

# So a numproc that breaks formula 1 breaks it a second time under the name avnumproc.
$ printf 'A="1:1"\nB="1:1"\nNUMPROC="101:50"\nAVNUMPROC="1"\n' > av.conf &&
> ktrctl --vocab four.xml validate av.conf
1: QOS.soft <= QOS.hard: numproc: rule 1
1: QOS.soft <= QOS.hard: avnumproc: rule 1
(exit 1)

# Without numproc nothing is halved, and formula 3 fails on the absent numproc.
$ printf 'A="1:1"\nB="1:1"\nAVNUMPROC="1"\n' > av.conf && ktrctl --vocab four.xml validate av.conf
ktrctl: av.conf: parameter 'numproc' is absent
(exit 2)

# The SLM mode, in any case, may replace the formulas: "slm" checks only that the memory limit
# is set, "all" skips them when it is set. Each file below breaks formula 1; all but none.conf
# set SLMMODE, and the -limit files also SLMMEMORYLIMIT.
$ printf 'A="30:20"\nB="30:40"\nNUMPROC="100:200"\nAVNUMPROC="1"\n' > none.conf &&
> for mode in SLM slm ALL all ub; do { cat none.conf; echo "SLMMODE=\"$mode\""; } > $mode.conf; done &&
> for f in none SLM ALL ub; do { cat $f.conf; echo 'SLMMEMORYLIMIT="1073741824"'; } > $f-limit.conf; done

$ ktrctl --vocab four.xml validate SLM-limit.conf slm.conf ALL-limit.conf all.conf ub-limit.conf none-limit.conf
slm.conf: SLMMODE is slm but SLMMEMORYLIMIT is not set
all.conf: 1: QOS.soft <= QOS.hard: a: rule 1
ub-limit.conf: 1: QOS.soft <= QOS.hard: a: rule 1
none-limit.conf: 1: QOS.soft <= QOS.hard: a: rule 1
(exit 1)

# Formulas address at most 98 resources; the limit and barrier of the 98th are still told
# apart, and a vocabulary with 99 is refused.
$ cat > many <<'END'
> printf '<vocabulary><technology><name>quellix</name><category><name>qos</name>'
> for i in $(seq $1); do printf '<parameter><name>r%d</name><value_type>2</value_type><complexity>1</complexity></parameter>' $i; done
> printf '</category><category><name>tune</name><parameter><name>f</name><type>1</type><formula>r98.hard &lt;= r98.soft</formula>'
> printf '<formula_info>limit not above barrier</formula_info></parameter></category></technology></vocabulary>\n'
> END
> sh many 98 > 98.xml && sh many 99 > 99.xml && printf 'R98="1:2"\n' > r.conf

$ ktrctl --vocab 98.xml validate r.conf
1: r98.hard <= r98.soft: r98: limit not above barrier
(exit 1)

$ ktrctl --vocab 99.xml validate r.conf
ktrctl: 99.xml: invalid vocabulary: technology 'quellix', category 'tune': too many parameters in formulas initialization ('QOS')
(exit 2)
