# msg read on the update service's records, package versions, template configurations and
# clone options: how their readers take options, markers, lists and choices between parts,
# shown by what each record writes back or by the one line a failed read prints.

# A check period is the name of the first element inside check_period, spelled exactly; a
# schedule without one writes none.
$ for body in '<check_period><monday/></check_period>' '<check_period><saturday/><sunday/></check_period>' ''; do
>   echo "<service_settings>$body<period>5</period></service_settings>" > s.xml &&
>   ktrctl msg read --as KTRUpdateServiceSettings s.xml | tail -n +2
> done
<service_settings>
  <check_period>
    <monday/>
  </check_period>
  <period>5</period>
</service_settings>
<service_settings>
  <check_period>
    <saturday/>
  </check_period>
  <period>5</period>
</service_settings>
<service_settings>
  <period>5</period>
</service_settings>

# An unknown or misspelt day, a check_period holding no element, and a period that is not a
# number each fail the schedule.
$ for body in '<check_period><Monday/></check_period><period>5</period>' '<check_period><someday/></check_period><period>5</period>' '<check_period/><period>5</period>' '<check_period>monday</check_period><period>5</period>' '<period>five</period>'; do
>   echo "<service_settings>$body</service_settings>" > s.xml &&
>   ktrctl msg read --as KTRUpdateServiceSettings s.xml
> done
ktrctl: s.xml: reading KTRUpdateServiceSettings failed: check_period: unknown option Monday
ktrctl: s.xml: reading KTRUpdateServiceSettings failed: check_period: unknown option someday
ktrctl: s.xml: reading KTRUpdateServiceSettings failed: check_period: no option given
ktrctl: s.xml: reading KTRUpdateServiceSettings failed: check_period: no option given
ktrctl: s.xml: reading KTRUpdateServiceSettings failed: period: "five" is not a 32-bit integer
(exit 2)

# autoreboot is a marker: it counts by its presence, not its value, although the schemas give
# it no content at all.
$ echo '<service_settings><autoreboot>0</autoreboot><period>5</period></service_settings>' > marker.xml &&
> ktrctl msg read --as KTRUpdateServiceSettings marker.xml | tail -n +2; ktrctl msg validate --as KTRUpdateServiceSettings marker.xml
<service_settings>
  <autoreboot/>
  <period>5</period>
</service_settings>
marker.xml:1: Element 'autoreboot': Character content is not allowed, because the content type is empty.
(exit 1)

# A proxy without a type keeps the one it has (no_proxy for a new record), and the type is
# always written; an unknown type fails.
$ echo '<proxy><conn_param1>h</conn_param1></proxy>' > proxy.xml && ktrctl msg read --as KTRUpdateProxySettings proxy.xml | tail -n +2
<proxy>
  <type>
    <no_proxy/>
  </type>
  <conn_param1>h</conn_param1>
</proxy>

$ echo '<proxy><type><socks/></type></proxy>' > proxy.xml && ktrctl msg read --as KTRUpdateProxySettings proxy.xml
ktrctl: proxy.xml: reading KTRUpdateProxySettings failed: type: unknown option socks
(exit 2)

# The product named srn is the management product wherever it stands among the products: it
# leaves the list and is written after it.
$ p() { echo "<product><name>$1</name><key>$2</key><install_type><manual/></install_type></product>"; } &&
> echo "<config>$(p a k)$(p srn mgmt)$(p b k)<connection/></config>" > products.xml &&
> ktrctl msg read --as KTRUpdateConfig products.xml | tail -n +2
<config>
  <connection/>
  <product>
    <name>a</name>
    <key>k</key>
    <install_type>
      <manual/>
    </install_type>
  </product>
  <product>
    <name>b</name>
    <key>k</key>
    <install_type>
      <manual/>
    </install_type>
  </product>
  <product>
    <name>srn</name>
    <key>mgmt</key>
    <install_type>
      <manual/>
    </install_type>
  </product>
</config>

# The update configuration's access is its schedule when it has one, else its yum
# repositories, else its connection; conn_option inside connection is read whatever the access
# is. The writer puts the access first, the products next, and the connection last, adding an
# empty one when the access is not the connection.
$ echo '<service_settings><period>7</period></service_settings>' > settings.part &&
> echo '<yum><repository><name>base</name></repository></yum>' > yum.part &&
> echo '<connection><conn_param1>h</conn_param1><conn_option>x</conn_option></connection>' > connection.part &&
> { echo '<config>'; cat settings.part yum.part connection.part; echo '</config>'; } > config.xml &&
> ktrctl msg read --as KTRUpdateConfig config.xml | tail -n +2
<config>
  <service_settings>
    <period>7</period>
  </service_settings>
  <product>
    <name>srn</name>
    <key/>
    <install_type>
      <disabled/>
    </install_type>
  </product>
  <connection>
    <conn_option>x</conn_option>
  </connection>
</config>

$ { echo '<config>'; cat yum.part connection.part; echo '</config>'; } > config.xml &&
> ktrctl msg read --as KTRUpdateConfig config.xml | tail -n +2
<config>
  <yum>
    <repository>
      <key/>
      <base_url/>
      <name>base</name>
    </repository>
  </yum>
  <product>
    <name>srn</name>
    <key/>
    <install_type>
      <disabled/>
    </install_type>
  </product>
  <connection>
    <conn_option>x</conn_option>
  </connection>
</config>

$ { echo '<config>'; cat connection.part; echo '</config>'; } > config.xml &&
> ktrctl msg read --as KTRUpdateConfig config.xml | tail -n +2
<config>
  <connection>
    <conn_param1>h</conn_param1>
    <conn_option>x</conn_option>
  </connection>
  <product>
    <name>srn</name>
    <key/>
    <install_type>
      <disabled/>
    </install_type>
  </product>
</config>

$ { echo '<config>'; cat yum.part; echo '</config>'; } > config.xml &&
> ktrctl msg read --as KTRUpdateConfig config.xml | tail -n +2
<config>
  <yum>
    <repository>
      <key/>
      <base_url/>
      <name>base</name>
    </repository>
  </yum>
  <product>
    <name>srn</name>
    <key/>
    <install_type>
      <disabled/>
    </install_type>
  </product>
  <connection/>
</config>

# A schedule that fails to read is left out, but still keeps the connection from being the
# access: conn_param1 is not taken.
$ { echo '<config><service_settings/>'; cat connection.part; echo '</config>'; } > config.xml &&
> ktrctl msg read --as KTRUpdateConfig config.xml | tail -n +2
<config>
  <connection>
    <conn_option>x</conn_option>
  </connection>
  <product>
    <name>srn</name>
    <key/>
    <install_type>
      <disabled/>
    </install_type>
  </product>
</config>

# A system update without a type element has none and writes none; servicepack is read, an
# unknown type fails.
$ for type in '' '<type><servicepack/></type>'; do
>   echo "<update><name>n</name>$type</update>" > system.xml &&
>   ktrctl msg read --as KTRSystemUpdate system.xml | tee written.xml | tail -n +2 &&
>   ktrctl msg validate --as KTRSystemUpdate written.xml
> done
<update xmlns:up="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:type="up:system_updateType">
  <up:name>n</up:name>
</update>
<update xmlns:up="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xsi:type="up:system_updateType">
  <up:name>n</up:name>
  <up:type>
    <up:servicepack/>
  </up:type>
</update>

$ echo '<update><type><patch/></type></update>' > system.xml && ktrctl msg read --as KTRSystemUpdate system.xml
ktrctl: system.xml: reading KTRSystemUpdate failed: type: unknown option patch
(exit 2)

# In an update list, an update of a schema type this library does not know arrives as a plain
# update; an update that fails to read ends the list, keeping the ones before it.
$ echo '<updates xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:u="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date"><update xsi:type="u:future_updateType"><u:name>x</u:name></update></updates>' > list.xml &&
> ktrctl msg read --as KTRUpdateList list.xml | tail -n +2
<updates xmlns:up="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
  <update xsi:type="up:updateType">
    <up:name>x</up:name>
  </update>
</updates>

$ u() { echo "<update xsi:type='u:system_updateType'><u:name>$1</u:name>$2</update>"; } &&
> echo "<updates xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:u='http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date'>$(u a)$(u b '<u:type><u:patch/></u:type>')$(u c)</updates>" > list.xml &&
> ktrctl msg read --as KTRUpdateList list.xml | tail -n +2
<updates xmlns:up="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrup2date" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
  <update xsi:type="up:system_updateType">
    <up:name>a</up:name>
  </update>
</updates>

# A package version must have its version text and a readable primary flag; the secondary flag,
# the template list and each template are lenient: a bad secondary flag reads as 0, a missing
# list as none, and a template without its key ends the list.
$ echo '<version><version_text>4.2</version_text><primary_flag>1</primary_flag><secondary_flag>1</secondary_flag><template_list><package><release>20240101</release><key>centos-7-x86_64</key></package><package><key>centos-7-minimal</key></package></template_list></version>' > version.xml &&
> for change in 's|<version_text>4.2</version_text>||' 's|<primary_flag>1</primary_flag>||' 's|<primary_flag>1|<primary_flag>perhaps|'; do
>   sed "$change" version.xml > changed.xml && ktrctl msg read --as KTRPackageVersion changed.xml
> done
ktrctl: changed.xml: reading KTRPackageVersion failed: version_text: missing
ktrctl: changed.xml: reading KTRPackageVersion failed: primary_flag: missing
ktrctl: changed.xml: reading KTRPackageVersion failed: primary_flag: "perhaps" is not a boolean (0, 1, false or true)
(exit 2)

$ for change in 's|<secondary_flag>1</secondary_flag>||' 's|<secondary_flag>1|<secondary_flag>perhaps|'; do
>   sed "$change" version.xml > changed.xml && ktrctl msg read --as KTRPackageVersion changed.xml | tail -n +2
> done
<version>
  <version_text>4.2</version_text>
  <primary_flag>1</primary_flag>
  <secondary_flag>0</secondary_flag>
  <template_list>
    <package>
      <release>20240101</release>
      <key>centos-7-x86_64</key>
    </package>
    <package>
      <release/>
      <key>centos-7-minimal</key>
    </package>
  </template_list>
</version>
<version>
  <version_text>4.2</version_text>
  <primary_flag>1</primary_flag>
  <secondary_flag>0</secondary_flag>
  <template_list>
    <package>
      <release>20240101</release>
      <key>centos-7-x86_64</key>
    </package>
    <package>
      <release/>
      <key>centos-7-minimal</key>
    </package>
  </template_list>
</version>

$ for change in 's|template_list>|other>|g' 's|<key>centos-7-minimal</key>||'; do
>   sed "$change" version.xml > changed.xml && ktrctl msg read --as KTRPackageVersion changed.xml | tail -n +2
> done
<version>
  <version_text>4.2</version_text>
  <primary_flag>1</primary_flag>
  <secondary_flag>1</secondary_flag>
  <template_list/>
</version>
<version>
  <version_text>4.2</version_text>
  <primary_flag>1</primary_flag>
  <secondary_flag>1</secondary_flag>
  <template_list>
    <package>
      <release>20240101</release>
      <key>centos-7-x86_64</key>
    </package>
  </template_list>
</version>

# A template configuration files its packages by their keys, keeping the first package of a
# key. A package without a key fails the whole record, while a setting without a value only
# ends the settings: the technologies after them are still read.
$ echo '<info><version_text>7.0-1</version_text><primary_flag>0</primary_flag><key>centos-7-x86_64</key><config_text2/><settings><item><name>OSTEMPLATE</name><value>centos-7</value></item><item><name>PKG_MANAGER</name><value>yum</value></item></settings><package><release>4.2</release><key>bash</key></package><package><key>yum</key></package><technology>x86_64</technology><technology>hqfs</technology></info>' > info.xml &&
> sed 's|<package><key>yum</key></package>|<package><release>5</release><key>bash</key></package>|' info.xml > twice.xml &&
> ktrctl msg read --as KTRTemplateConfigInfo twice.xml | tail -n +2
<info>
  <version_text>7.0-1</version_text>
  <primary_flag>0</primary_flag>
  <secondary_flag>0</secondary_flag>
  <template_list/>
  <key>centos-7-x86_64</key>
  <config_text2/>
  <settings>
    <item>
      <name>OSTEMPLATE</name>
      <value>centos-7</value>
    </item>
    <item>
      <name>PKG_MANAGER</name>
      <value>yum</value>
    </item>
  </settings>
  <package>
    <package_flag>0</package_flag>
    <release>4.2</release>
    <key>bash</key>
  </package>
  <detail/>
  <config_text4/>
  <config_text5/>
  <technology>x86_64</technology>
  <technology>hqfs</technology>
</info>

$ sed 's|<key>yum</key>||' info.xml > nokey.xml && ktrctl msg read --as KTRTemplateConfigInfo nokey.xml
ktrctl: nokey.xml: reading KTRTemplateConfigInfo failed: package: key: missing
(exit 2)

$ sed 's|<value>yum</value>||' info.xml > novalue.xml && ktrctl msg read --as KTRTemplateConfigInfo novalue.xml | tail -n +2
<info>
  <version_text>7.0-1</version_text>
  <primary_flag>0</primary_flag>
  <secondary_flag>0</secondary_flag>
  <template_list/>
  <key>centos-7-x86_64</key>
  <config_text2/>
  <settings>
    <item>
      <name>OSTEMPLATE</name>
      <value>centos-7</value>
    </item>
  </settings>
  <package>
    <package_flag>0</package_flag>
    <release>4.2</release>
    <key>bash</key>
  </package>
  <package>
    <package_flag>0</package_flag>
    <release/>
    <key>yum</key>
  </package>
  <detail/>
  <config_text4/>
  <config_text5/>
  <technology>x86_64</technology>
  <technology>hqfs</technology>
</info>

# Clone options read without a configuration get an empty one; veid is a set: each id is kept
# once.
$ echo '<options><clone_flags>1</clone_flags><veid>101</veid><veid>102</veid><veid>102</veid></options>' > clone.xml &&
> ktrctl msg read --as KTRMigratorCloneOptions clone.xml | tail -n +2
<options xmlns:rel="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrrelocator" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:ktr="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes" xsi:type="rel:clone_optionsType">
  <rel:clone_flags>1</rel:clone_flags>
  <rel:env_config xsi:type="ktr:venv_configType"/>
  <rel:veid>101</rel:veid>
  <rel:veid>102</rel:veid>
</options>
