# validate prints one line per violated formula (ID: FORMULA: PARAMETERS: MESSAGE) and exits 1.

$ ktrctl validate containers/101.conf && ktrctl validate containers/102.conf

$ ktrctl validate containers/103.conf
101: QOS.soft <= QOS.hard: openfiles: The barrier of a resource is above its limit.
201: kernelmem.soft >= 40kb * avnumproc + dircache.hard: kernelmem,dircache,avnumproc: The kernelmem barrier must hold 40 KB for each average process plus the dircache limit.
301: tcpsendbuf.hard - tcpsendbuf.soft >= 2.5kb * tcpsockets.hard: tcpsockets,tcpsendbuf: The tcpsendbuf limit must exceed its barrier by 2.5 KB for each TCP socket.
501: openfiles.soft >= 32 * avnumproc: avnumproc,openfiles: The openfiles barrier must allow 32 open files for each average process.
(exit 1)

# --vocab names the vocabulary; vocab WHAT writes one with the two resource parameters and the
# "tune" category holding WHAT.
$ cat > vocab <<'END'
> printf '<vocabulary><technology><name>quellix</name><category><name>qos</name>'
> for p in numproc openfiles; do
>   printf '<parameter><name>%s</name><value_type>2</value_type><complexity>1</complexity></parameter>' $p
> done
> printf '</category><category><name>tune</name>%s</category></technology></vocabulary>\n' "$1"
> END
> sh vocab '<parameter><name>f</name><type>7</type><formula>openfiles &gt;= numproc.hard</formula><formula_info>few files</formula_info></parameter>' > strict.xml
> printf 'NUMPROC="10:20"\nOPENFILES="5"\nSLMMODE="ub"\n' > c.conf

$ ktrctl --vocab strict.xml validate c.conf
7: openfiles >= numproc.hard: numproc,openfiles: few files
(exit 1)

# A container in SLM mode "slm" is checked for its memory limit alone.
$ sed s/ub/slm/ c.conf > slm.conf && ktrctl --vocab strict.xml validate slm.conf
SLMMODE is slm but SLMMEMORYLIMIT is not set
(exit 1)

# Unusable vocabularies and files: one error line each.
$ echo '<vocabulary><technology><name>quellix</name></technology></vocabulary>' > none.xml
> ktrctl --vocab none.xml validate c.conf
ktrctl: none.xml: invalid vocabulary: technology 'quellix': no category 'qos'
(exit 2)

$ echo '<vocabulary>' > open.xml && ktrctl --vocab open.xml validate c.conf
ktrctl: open.xml: can not parse vocabulary: line 2, column 1: Premature end of data in tag vocabulary line 1
(exit 2)

$ sh vocab '' > empty.xml && ktrctl --vocab empty.xml validate c.conf
ktrctl: c.conf: can not read FORMULAE
(exit 2)

$ sh vocab '<parameter><name>f</name><type>1</type><formula>(numproc)</formula><formula_info>m</formula_info></parameter>' > bad.xml
> ktrctl --vocab bad.xml validate c.conf
ktrctl: bad.xml: invalid vocabulary: technology 'quellix', category 'tune', parameter 'f': formula '(numproc)' does not parse
(exit 2)

$ printf 'NUMPROC="10:20"\n' > a.conf && ktrctl --vocab strict.xml validate a.conf
ktrctl: a.conf: parameter 'openfiles' is absent
(exit 2)

$ printf 'HOSTNAME="h"\n' > h.conf && ktrctl validate h.conf
ktrctl: h.conf: no resource values to validate
(exit 2)

$ ktrctl validate absent.conf
ktrctl: cannot read absent.conf: No such file or directory
(exit 2)

$ ktrctl validate
ktrctl: usage: ktrctl validate FILE|DIR...
(exit 2)
