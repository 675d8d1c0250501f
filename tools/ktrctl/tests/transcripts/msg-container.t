# What the container records make of the agent's messages: which broken or missing parts they
# drop and still read, which fail the whole record, and what they then write back.

# A network configuration reads with its lists empty, and writes back the entries it read.
$ echo '<net/>' > net.xml && ktrctl msg read --as KTRNetConfiguration net.xml | tail -n +2
<net/>

$ echo '<net><ip_range><range_text>t</range_text><address>10.1.1.1</address></ip_range></net>' > net.xml &&
> ktrctl msg read --as KTRNetConfiguration net.xml | tail -n +2
<net>
  <ip_range>
    <range_text>t</range_text>
    <address>10.1.1.1</address>
    <range_param/>
  </ip_range>
</net>

# The shaping flag is the element's presence, whatever the element holds.
$ echo '<net><shaping_flag>0</shaping_flag></net>' > net.xml &&
> ktrctl msg read --as KTRNetConfiguration net.xml | tail -n +2
<net>
  <shaping_flag/>
</net>

# One broken entry in any list fails the whole configuration.
$ for entry in '<iface_shaping><net_device_id>eth0</net_device_id></iface_shaping>' \
>     '<iface_shaping><net_device_id>e</net_device_id><bandwidth>x</bandwidth></iface_shaping>' \
>     '<shaping_class><class_rate1>1</class_rate1></shaping_class>' \
>     '<ip_range><range_text>t</range_text></ip_range>' \
>     '<ip_range><range_text>t</range_text><address> </address></ip_range>'; do
>   echo "<net>$entry</net>" > net.xml && ktrctl msg read --as KTRNetConfiguration net.xml
> done
ktrctl: net.xml: reading KTRNetConfiguration failed: iface_shaping: bandwidth: missing
ktrctl: net.xml: reading KTRNetConfiguration failed: iface_shaping: bandwidth: "x" is not a 64-bit integer
ktrctl: net.xml: reading KTRNetConfiguration failed: shaping_class: name: missing
ktrctl: net.xml: reading KTRNetConfiguration failed: ip_range: address: missing
ktrctl: net.xml: reading KTRNetConfiguration failed: ip_range: address: invalid
(exit 2)

# Container settings tell "no offline service" (a marker element) from "not said" (nothing),
# and write each back as read, valid against the schemas. Here the whole message; after this
# only what is inside the root.
$ echo '<vt><settings_version>1</settings_version></vt>' > vt.xml &&
> ktrctl msg read --as KTRVtSettings vt.xml > back.xml && ktrctl msg validate back.xml && tail -n +2 back.xml
<vt xmlns:ktr="http://www.srn-agent.org/webservices/ktr/4.0.0/ktrtypes" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:mbq="http://www.srn-agent.org/webservices/mbq/4.0.0/mbqtypes" xsi:type="ktr:vt_settingsType">
  <ktr:qoses/>
  <mbq:settings_version>1</mbq:settings_version>
</vt>

$ for services in '<no_offline_service/>' \
>     '<offline_service><name>a</name><port>1</port><eid>s</eid></offline_service>'; do
>   echo "<vt>$services<settings_version>1</settings_version></vt>" > vt.xml &&
>   ktrctl msg read --as KTRVtSettings vt.xml > back.xml && ktrctl msg validate back.xml && tail -n +3 back.xml
> done
  <ktr:no_offline_service/>
  <ktr:qoses/>
  <mbq:settings_version>1</mbq:settings_version>
</vt>
  <ktr:offline_service xsi:type="ktr:redirect_serviceType">
    <ktr:name>a</ktr:name>
    <ktr:port>1</ktr:port>
    <ktr:eid>s</ktr:eid>
  </ktr:offline_service>
  <ktr:qoses/>
  <mbq:settings_version>1</mbq:settings_version>
</vt>

# A broken offline service does not fail the settings: the list is left unsaid.
$ echo '<vt><offline_service><name>a</name><eid>s</eid></offline_service><settings_version>1</settings_version></vt>' > vt.xml &&
> ktrctl msg read --as KTRVtSettings vt.xml | tail -n +3
  <ktr:qoses/>
  <mbq:settings_version>1</mbq:settings_version>
</vt>

# A settings item may lack its name or its value (read as empty); of a repeated name the first
# value counts.
$ for items in '<item><name>k</name></item>' '<item><value>v</value></item>' \
>     '<item><name>k</name><value>1</value></item><item><name>k</name><value>2</value></item>'; do
>   echo "<vt>$items<settings_version>1</settings_version></vt>" > vt.xml &&
>   ktrctl msg read --as KTRVtSettings vt.xml | tail -n +3
> done
  <ktr:item>
    <ktr:name>k</ktr:name>
    <ktr:value/>
  </ktr:item>
  <ktr:qoses/>
  <mbq:settings_version>1</mbq:settings_version>
</vt>
  <ktr:item>
    <ktr:name/>
    <ktr:value>v</ktr:value>
  </ktr:item>
  <ktr:qoses/>
  <mbq:settings_version>1</mbq:settings_version>
</vt>
  <ktr:item>
    <ktr:name>k</ktr:name>
    <ktr:value>1</ktr:value>
  </ktr:item>
  <ktr:qoses/>
  <mbq:settings_version>1</mbq:settings_version>
</vt>

# Resources never fail the settings: an empty or missing list reads as none, and a broken
# resource ends the list there.
$ a='<qos_value><id>a</id><limit>1</limit></qos_value>' &&
> for qoses in '' '<qoses/>' "<qoses>$a<qos_value><id>b</id><limit>2</limit></qos_value></qoses>" \
>     "<qoses>$a<qos_value><id>b</id></qos_value></qoses>"; do
>   echo "<vt>$qoses<settings_version>1</settings_version></vt>" > vt.xml &&
>   ktrctl msg read --as KTRVtSettings vt.xml | tail -n +3
> done
  <ktr:qoses/>
  <mbq:settings_version>1</mbq:settings_version>
</vt>
  <ktr:qoses/>
  <mbq:settings_version>1</mbq:settings_version>
</vt>
  <ktr:qoses>
    <ktr:qos_value>
      <ktr:id>a</ktr:id>
      <ktr:limit>1</ktr:limit>
    </ktr:qos_value>
    <ktr:qos_value>
      <ktr:id>b</ktr:id>
      <ktr:limit>2</ktr:limit>
    </ktr:qos_value>
  </ktr:qoses>
  <mbq:settings_version>1</mbq:settings_version>
</vt>
  <ktr:qoses>
    <ktr:qos_value>
      <ktr:id>a</ktr:id>
      <ktr:limit>1</ktr:limit>
    </ktr:qos_value>
  </ktr:qoses>
  <mbq:settings_version>1</mbq:settings_version>
</vt>

# Upgrade options: the upgrade flag is the element's presence.
$ for options in '<options/>' '<options><upgrade_flag/></options>' '<options><upgrade_flag>0</upgrade_flag></options>'; do
>   echo "$options" > options.xml && ktrctl msg read --as KTRUpgradeOptions options.xml | tail -n +2
> done
<options/>
<options>
  <upgrade_flag/>
</options>
<options>
  <upgrade_flag/>
</options>

# A quota limit needs only its soft and hard limits.
$ echo '<limit><soft_limit>1</soft_limit><hard_limit>2</hard_limit></limit>' > limit.xml &&
> ktrctl msg read --as KTRUGIDQuotaLimit::QuotaLimit limit.xml | tail -n +2
<limit>
  <usage>0</usage>
  <soft_limit>1</soft_limit>
  <hard_limit>2</hard_limit>
</limit>

# Quota info: the limits and the grace periods are each optional. A part that is missing or
# broken is left out and the rest still reads; an empty limit list is kept.
$ for parts in '' '<ugid_limits/>' '<ugid_limits><ugid_limit><name>x</name></ugid_limit></ugid_limits>' \
>     '<grace_periods><quota_setting>1</quota_setting></grace_periods>' \
>     '<grace_periods><quota_setting>1</quota_setting><grace_period>2</grace_period></grace_periods>'; do
>   echo "<quota><type>1</type>$parts</quota>" > quota.xml &&
>   ktrctl msg read --as KTRUGIDQuotaInfo quota.xml | tail -n +2
> done
<quota>
  <type>1</type>
</quota>
<quota>
  <type>1</type>
  <ugid_limits/>
</quota>
<quota>
  <type>1</type>
</quota>
<quota>
  <type>1</type>
</quota>
<quota>
  <type>1</type>
  <grace_periods>
    <quota_setting>1</quota_setting>
    <grace_period>2</grace_period>
  </grace_periods>
</quota>
