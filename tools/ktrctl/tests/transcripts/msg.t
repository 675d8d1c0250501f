# msg types lists each record class (CLASS, schema type or -, namespace); msg tags the tag ids
# in ascending order.

$ ktrctl msg types > types && grep -E "^(KTRUpdate|KTRMigratorCloneOptions|KTREnvConfig|KTRNetVEth|KTRQuotaStats|KTRNetConfiguration|KTRUGIDQuotaInfo|KTRPackageHQTemplate|HardDisk::List::HqFS|KTRUpdateConfig)$(printf '\t')" types | tr '\t' ' '
KTREnvConfig venv_configType http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes
HardDisk::List::HqFS ct_hqfs http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes
KTRNetVEth net_vethType http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes
KTRPackageHQTemplate package_hqtemplateType http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes
KTRUpdateConfig - http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date
KTRUpdate updateType http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date
KTRNetConfiguration - http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes
KTRMigratorCloneOptions clone_optionsType http://www.srn-agent.org/webservices/ktr/4.0.0/ktrrelocator
KTRUGIDQuotaInfo - http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes
KTRQuotaStats - http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes

$ ktrctl msg tags > tags && sort -nuc tags && awk 'NF != 2 || $1 !~ /^[0-9]+$/' tags && test $(wc -l < tags) -gt 100 && grep -x '1002 veid' tags
1002 veid

# msg read chooses the class by the root's xsi:type and writes the record back; what it prints
# reads back to the same text.
$ echo '<update xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:u="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date" xsi:type="u:os_template_updateType"><name>centos</name><app_template xsi:type="u:app_template_updateType"><name>mysql</name></app_template></update>' > u.xml
> ktrctl msg read u.xml > again.xml && ktrctl msg read again.xml | cmp - again.xml && cat again.xml
<?xml version="1.0" encoding="UTF-8"?>
<update xmlns:up="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:type="up:os_template_updateType">
  <up:name>centos</up:name>
  <up:app_template xsi:type="up:app_template_updateType">
    <up:name>mysql</up:name>
  </up:app_template>
</update>

# --as overrides the declared type: the record is read and written as the class named.
$ ktrctl msg read --as KTRSystemUpdate u.xml
<?xml version="1.0" encoding="UTF-8"?>
<update xmlns:up="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:type="up:system_updateType">
  <up:name>centos</up:name>
</update>

$ echo '<ubc><name>kernelmem</name><usage>12</usage></ubc>' > ubc.xml && ktrctl msg read --as KTRUbc ubc.xml
<?xml version="1.0" encoding="UTF-8"?>
<ubc>
  <name>kernelmem</name>
  <usage>12</usage>
</ubc>

# Failures: one error line each.
$ echo '<r><type><patch/></type></r>' > r.xml && ktrctl msg read --as KTRSystemUpdate r.xml
ktrctl: r.xml: reading KTRSystemUpdate failed: type: unknown option patch
(exit 2)

$ ktrctl msg read r.xml
ktrctl: r.xml: the root element declares no schema type; name the class with --as
(exit 2)

$ sed 's/os_template_updateType/future_updateType/' u.xml > future.xml && ktrctl msg read future.xml
ktrctl: future.xml: unknown schema type http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date:future_updateType
(exit 2)

$ ktrctl msg read --as NoSuchRecord r.xml
ktrctl: unknown record class NoSuchRecord (see ktrctl msg types)
(exit 2)

$ echo '<r><name>' > open.xml && ktrctl msg read --as KTRUbc open.xml
ktrctl: open.xml: line 2, column 1: Premature end of data in tag name line 1
(exit 2)

$ for args in 'read absent.xml' read 'read --as' frobnicate ''; do
>   ktrctl msg $args; test $? = 2 || echo "msg $args: not refused"
> done
ktrctl: cannot read absent.xml: No such file or directory
ktrctl: msg read needs a FILE
ktrctl: msg read: --as needs a CLASS
ktrctl: msg: unknown subcommand or arguments (see ktrctl --help)
ktrctl: msg needs types, tags, read or validate (see ktrctl --help)

# msg validate checks messages against the published schemas: silent for a valid one (a line
# each with --verbose), a FILE:LINE line per problem (exit 1). The reader takes elements by
# name in any namespace; the schemas say which namespace each is in.
$ ktrctl msg validate --verbose --as KTRUbc again.xml ubc.xml
again.xml: valid
ubc.xml: valid

$ printf '<ubc>\n  <name>kernelmem</name>\n  <usage>-x</usage>\n  <extra/>\n</ubc>\n' > bad.xml && ktrctl msg validate --as KTRUbc ubc.xml bad.xml u.xml future.xml
bad.xml:3: Element 'usage': '-x' is not a valid value of the atomic type 'xs:long'.
bad.xml:4: Element 'extra': This element is not expected.
u.xml:1: Element 'name': This element is not expected. Expected is one of ( u:name, u:key, u:detail, u:size, u:update_flag, u:release, u:installed_version, u:update_param, u:app_template ).
future.xml:1: Element 'update', attribute 'xsi:type': The QName value 'u:future_updateType' of the xsi:type attribute does not resolve to a type definition.
future.xml:1: Element 'name': This element is not expected. Expected is one of ( u:name, u:key, u:detail, u:size, u:update_flag, u:release, u:installed_version, u:update_param ).
(exit 1)

# A message that cannot be checked, or schemas that do not load, are errors.
$ ktrctl msg validate ubc.xml
ktrctl: ubc.xml: the root element declares no schema type; name the class with --as
(exit 2)

$ mkdir schemas && echo '<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema" targetNamespace="urn:x"><xs:include schemaLocation="y.xsd"/></xs:schema>' > schemas/x.xsd && ktrctl msg validate --schemas schemas again.xml
ktrctl: schemas: schemas/y.xsd: not a document of this schema set
(exit 2)

# Only regular files are read: a FIFO is refused at once instead of waiting for a writer.
$ mkfifo fifo && ktrctl msg read fifo; ktrctl msg validate fifo
ktrctl: cannot read fifo: not a regular file
ktrctl: cannot read fifo: not a regular file
(exit 2)
