# --vocab FILE makes a command use the vocabulary in FILE instead of the built-in one. The file is
# loaded and checked as a whole: a vocabulary the library cannot use is refused in one line naming
# the file and the first problem, rather than failing later, value by value.

# vocab QOS [TUNE] writes a vocabulary of the technology quellix: its resource category "qos" holds
# numproc (held as barrier:limit) and then QOS; TUNE, when given, is the body of the formula
# category "tune". c.conf sets two resources.
$ cat > vocab <<'END'
> printf '<vocabulary><technology><name>quellix</name><category><name>qos</name>'
> printf '<parameter><name>numproc</name><value_type>2</value_type><complexity>1</complexity></parameter>%s</category>' "$1"
> test $# -lt 2 || printf '<category><name>tune</name>%s</category>' "$2"
> printf '</technology></vocabulary>\n'
> END
> printf 'NUMPROC="10:20"\nCPULIMIT="50"\n' > c.conf

# A usable vocabulary: read takes from the file the resources the vocabulary names, and no other.
$ sh vocab '' > plain.xml && ktrctl --vocab plain.xml read c.conf | sed -n '/<qos_value>/,/<\/qos_value>/p'
  <qos_value>
    <id>numproc</id>
    <barrier>10</barrier>
    <limit>20</limit>
  </qos_value>

# A parameter without value_type is a whole number, and complexity 0 makes it a percentage, read
# in hundredths.
$ sh vocab '<parameter><name>cpulimit</name><complexity>0</complexity></parameter>' > percent.xml &&
> ktrctl --vocab percent.xml read c.conf | grep -A2 '<id>cpulimit'
    <id>cpulimit</id>
    <limit>5000</limit>
  </qos_value>

# An empty formula category is accepted: there is nothing to check values against yet.
$ sh vocab '' '' > no-formulas.xml && ktrctl --vocab no-formulas.xml read c.conf | grep '<id>'
    <id>numproc</id>

# The formulas of the "tune" category are what validate checks values against.
$ sh vocab '' '<parameter><name>f</name><type>1</type><formula>numproc.soft &lt;= numproc.hard</formula><formula_info>barrier above limit</formula_info></parameter>' > formula.xml &&
> ktrctl --vocab formula.xml validate c.conf && printf 'NUMPROC="30:20"\n' > over.conf &&
> ktrctl --vocab formula.xml validate over.conf
1: numproc.soft <= numproc.hard: numproc: barrier above limit
(exit 1)

# Refused: no resource category "qos" under quellix (an empty vocabulary, a category outside any
# technology), or one without parameters; a resource named QOS, the name formulas use for every
# resource; a value format configuration files cannot hold (value_type/complexity other than 2/1,
# 1/1 or 1/0; value_type 1 and complexity 2 when missing) or one that is not a number.
$ echo '<vocabulary/>' > empty.xml
> echo '<vocabulary><category><name>qos</name><parameter><name>numproc</name><complexity>1</complexity></parameter></category></vocabulary>' > no-technology.xml
> echo '<vocabulary><technology><name>quellix</name><category><name>qos</name></category></technology></vocabulary>' > no-parameters.xml
> sh vocab '<parameter><name>QOS</name><complexity>1</complexity></parameter>' > reserved.xml
> sh vocab '<parameter><name>cpu</name></parameter>' > no-format.xml
> sh vocab '<parameter><name>x</name><value_type>2</value_type><complexity>2</complexity></parameter>' > two-two.xml
> sh vocab '<parameter><name>x</name><value_type>two</value_type><complexity>1</complexity></parameter>' > type-two.xml
> sh vocab '<parameter><name>x</name><complexity/></parameter>' > no-complexity.xml
> for v in empty no-technology no-parameters reserved no-format two-two type-two no-complexity; do
>   ktrctl --vocab $v.xml read c.conf; test $? = 2 || echo "$v: not refused"
> done
ktrctl: empty.xml: invalid vocabulary: technology 'quellix': no category 'qos'
ktrctl: no-technology.xml: invalid vocabulary: technology 'quellix': no category 'qos'
ktrctl: no-parameters.xml: invalid vocabulary: technology 'quellix', category 'qos': no parameters
ktrctl: reserved.xml: invalid vocabulary: technology 'quellix', category 'qos', parameter 'QOS': the name is reserved: formulas use it for every resource
ktrctl: no-format.xml: invalid vocabulary: technology 'quellix', category 'qos', parameter 'cpu': value_type/complexity 1/2 is none of 2/1, 1/1, 1/0
ktrctl: two-two.xml: invalid vocabulary: technology 'quellix', category 'qos', parameter 'x': value_type/complexity 2/2 is none of 2/1, 1/1, 1/0
ktrctl: type-two.xml: invalid vocabulary: technology 'quellix', category 'qos', parameter 'x': value_type is not an integer
ktrctl: no-complexity.xml: invalid vocabulary: technology 'quellix', category 'qos', parameter 'x': complexity is not an integer

# Refused: a formula without an id, with an id that is not a number, without a formula text or
# without a message; a formula that does not parse (the grammar and the parameter names count;
# g, before it, is fine).
$ sh vocab '' '<parameter><name>f</name><formula>a</formula><formula_info>m</formula_info></parameter>' > no-id.xml
> sh vocab '' '<parameter><name>f</name><type>x1</type><formula>a</formula><formula_info>m</formula_info></parameter>' > bad-id.xml
> sh vocab '' '<parameter><name>f</name><type>1</type><formula_info>m</formula_info></parameter>' > no-formula.xml
> sh vocab '' '<parameter><name>f</name><type>1</type><formula>a</formula></parameter>' > no-message.xml
> sh vocab '' '<parameter><name>f</name><type>1</type><formula>(numproc)</formula><formula_info>m</formula_info></parameter>' > grammar.xml
> sh vocab '' '<parameter><name>g</name><type>1</type><formula>numproc</formula><formula_info>m</formula_info></parameter><parameter><name>f</name><type>2</type><formula>cpus &gt; 0</formula><formula_info>m</formula_info></parameter>' > unknown-name.xml
> for v in no-id bad-id no-formula no-message grammar unknown-name; do
>   ktrctl --vocab $v.xml read c.conf; test $? = 2 || echo "$v: not refused"
> done
ktrctl: no-id.xml: invalid vocabulary: technology 'quellix', category 'tune', parameter 'f': no formula id
ktrctl: bad-id.xml: invalid vocabulary: technology 'quellix', category 'tune', parameter 'f': formula id 'x1' is not an integer
ktrctl: no-formula.xml: invalid vocabulary: technology 'quellix', category 'tune', parameter 'f': no formula
ktrctl: no-message.xml: invalid vocabulary: technology 'quellix', category 'tune', parameter 'f': no formula message
ktrctl: grammar.xml: invalid vocabulary: technology 'quellix', category 'tune', parameter 'f': formula '(numproc)' does not parse
ktrctl: unknown-name.xml: invalid vocabulary: technology 'quellix', category 'tune', parameter 'f': formula 'cpus > 0' does not parse
