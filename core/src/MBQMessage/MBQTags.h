#pragma once

// Every numeric element id of the agent's messages, named once for the whole tree. The list
// below is the only place an id is written: it makes the constants (MBQ::Tag::kVeid is 1002)
// and the tag table of element names (MBQTagTable.cpp), and a test checks that each constant's
// name is its element name in CamelCase. docs/tag-table.md lists the same rows.
//
// X(id, Name, "element_name"), in ascending id order.
#define MBQ_TAGS(X) \
  X(1002, Veid, "veid")                             /* container number; container ids listed in clone options */ \
  X(1004, QuotaExtra, "quota_extra")                /* fourth, 32-bit field of a disk quota */ \
  X(1007, Type, "type")                             /* kind or number: container type, type options, formula id */ \
  X(1010, Name, "name")                             /* name of a record, parameter or map key; disk uuid; user id */ \
  X(1012, ConnParam1, "conn_param1")                /* first update connection setting */ \
  X(1017, Item, "item")                             /* one item of a text-to-text settings map */ \
  X(1018, Value, "value")                           /* value of a map item, capability or install source */ \
  X(1023, UpdateParam, "update_param")              /* last field of an update entry */ \
  X(1024, Size, "size")                             /* size of an image disk or an update */ \
  X(1025, ConnParam2, "conn_param2")                /* second update connection setting */ \
  X(1026, Key, "key")                               /* identifying text: map key, template, package, script name */ \
  X(1032, ConnParam3, "conn_param3")                /* third update connection setting */ \
  X(1034, RangeParam, "range_param")                /* third, text field of a shaped address range */ \
  X(1065, Usage, "usage")                           /* current usage of a quota; value of a resource counter */ \
  X(1066, SoftLimit, "soft_limit")                  /* second 64-bit quota field, the soft limit */ \
  X(1067, HardLimit, "hard_limit")                  /* third 64-bit quota field, the hard limit */ \
  X(1070, Bandwidth, "bandwidth")                   /* shaping rate of one network interface */ \
  X(1094, ShapingClass, "shaping_class")            /* one traffic shaping class */ \
  X(1099, ReportText3, "report_text3")              /* third text of a problem report */ \
  X(1100, ServiceSettings, "service_settings")      /* update service schedule settings */ \
  X(1101, ConnParam5, "conn_param5")                /* fifth setting of a direct update connection */ \
  X(1118, PackageFlag, "package_flag")              /* flag of a package record */ \
  X(1152, UpgradeFlag, "upgrade_flag")              /* marker of the single carried upgrade option bit */ \
  X(1156, Path, "path")                             /* a file path: disk image, file-system disk, excluded path */ \
  X(1185, EnvConfig, "env_config")                  /* container configuration carried by clone options */ \
  X(1189, RepoFlag, "repo_flag")                    /* flag of a yum repository */ \
  X(1223, Release, "release")                       /* package version entry; version of a template, update, vt info */ \
  X(1224, Note, "note")                             /* text of a hardware-node warning */ \
  X(1226, Template, "template")                     /* an application template of a container */ \
  X(1231, QuotaLimit2, "quota_limit2")              /* second limit set of a user or group quota */ \
  X(1232, QuotaLimit1, "quota_limit1")              /* first limit set of a user or group quota */ \
  X(1248, ShapingFlag, "shaping_flag")              /* flag of the network shaping configuration */ \
  X(1250, IfaceShaping, "iface_shaping")            /* shaping entry of one network interface */ \
  X(1251, ClassRate1, "class_rate1")                /* first rate of a shaping class */ \
  X(1252, ClassRate2, "class_rate2")                /* second rate of a shaping class */ \
  X(1253, IpRange, "ip_range")                      /* one shaped address range */ \
  X(1262, Host, "host")                             /* server-side address of a connection link */ \
  X(1264, UpdateText1, "update_text1")              /* first own text of a system or management-product update */ \
  X(1274, UpdateFlag, "update_flag")                /* flag of an update entry */ \
  X(1275, DiskEntry, "disk_entry")                  /* one disk of a disk list */ \
  X(1276, UpdateText2, "update_text2")              /* second own text of a system update */ \
  X(1278, VtText, "vt_text")                        /* second text of the virtualization layer info */ \
  X(1281, ServerAddress, "server_address")          /* server address handed out with a virtual NIC's addresses */ \
  X(1295, Package, "package")                       /* a template or package record, in lists, maps and the cache */ \
  X(1301, QuotaSetting, "quota_setting")            /* second quota of a file-system disk; first grace period */ \
  X(1302, FormulaInfo, "formula_info")              /* text that goes with a validation formula */ \
  X(1304, Complexity, "complexity")                 /* complexity of a resource parameter's value */ \
  X(1305, RedirectFlag, "redirect_flag")            /* flag of a redirect service */ \
  X(1307, Formula, "formula")                       /* text of a validation formula */ \
  X(1315, ReportText2, "report_text2")              /* second text of a problem report */ \
  X(1323, VtItem, "vt_item")                        /* one entry of the virtualization layer info's text list */ \
  X(1328, Content, "content")                       /* native configuration text; script body */ \
  X(1338, ProductParam, "product_param")            /* last field of an updated product */ \
  X(1346, ExcludePath, "exclude_path")              /* one path excluded from migration */ \
  X(1347, ReportText4, "report_text4")              /* fourth text of a problem report */ \
  X(1377, UgidLimit, "ugid_limit")                  /* one user or group quota limit */ \
  X(1405, Code, "code")                             /* code of a hardware-node warning */ \
  X(1417, RangeText, "range_text")                  /* first text of a shaped address range */ \
  X(1463, Iptables, "iptables")                     /* an iptables module enabled in a container */ \
  X(1476, QosValue, "qos_value")                    /* one resource value of the virtualization settings */ \
  X(1479, Parameter, "parameter")                   /* name of a parameter a violated formula read */ \
  X(1480, Warning, "warning")                       /* violated formula text; a hardware-node warning */ \
  X(1481, WarningInfo, "warning_info")              /* text that goes with a violated formula */ \
  X(1496, Detail, "detail")                         /* supplementary text of updates, templates, packages, scripts */ \
  X(1497, VersionText, "version_text")              /* version text of a package version */ \
  X(1498, PrimaryFlag, "primary_flag")              /* first flag of a package version or standard template */ \
  X(1499, SecondaryFlag, "secondary_flag")          /* second flag of a package version or template */ \
  X(1501, ConfigText2, "config_text2")              /* second text of a template configuration */ \
  X(1502, Settings, "settings")                     /* settings map of a template configuration */ \
  X(1509, TemplateList, "template_list")            /* templates of a package version */ \
  X(1511, PackageText, "package_text")              /* one entry of a package's text list */ \
  X(1538, UgidLimits, "ugid_limits")                /* user and group quota limits */ \
  X(1549, VeRoot, "ve_root")                        /* container root path, may hold $VEID */ \
  X(1550, VePrivate, "ve_private")                  /* container private area path, may hold $VEID */ \
  X(1556, OnBoot, "on_boot")                        /* start the container at boot */ \
  X(1557, RateBound, "rate_bound")                  /* network rate bound flag */ \
  X(1573, GracePeriods, "grace_periods")            /* grace periods of user and group quotas */ \
  X(1579, Quota, "quota")                           /* third quota of the quota statistics */ \
  X(1582, GracePeriod, "grace_period")              /* second grace period of user and group quotas */ \
  X(1586, LoadValue, "load_value")                  /* own value of a container CPU load record */ \
  X(1632, ReportText6, "report_text6")              /* sixth, optional text of a problem report */ \
  X(1647, OfflineManagement, "offline_management")  /* offline management flag */ \
  X(1652, Eid, "eid")                               /* EID a redirect service points to */ \
  X(1704, Port, "port")                             /* port of a redirect service or connection link */ \
  X(1705, ServiceFlag, "service_flag")              /* flag of the update service settings */ \
  X(1733, OsTemplate, "os_template")                /* OS template of a container; OS-template flag of a template */ \
  X(1747, OfflineService, "offline_service")        /* an offline service of a container */ \
  X(1780, Distribution, "distribution")             /* distribution of a container */ \
  X(1786, Capability, "capability")                 /* a capability of a container */ \
  X(1795, ConnParam4, "conn_param4")                /* fourth setting of a direct update connection */ \
  X(1803, InstallSource, "install_source")          /* install source of an updated product */ \
  X(1811, HqfsQuota, "hqfs_quota")                  /* first quota of a file-system disk */ \
  X(1813, ReportText5, "report_text5")              /* fifth text of a problem report */ \
  X(1818, ExcludeFlag, "exclude_flag")              /* flag of an excluded path */ \
  X(1837, SlmMode, "slm_mode")                      /* SLM mode of a container */ \
  X(1839, InstallType, "install_type")              /* install type option of an updated product */ \
  X(1843, ConnOption, "conn_option")                /* optional value kept with the update connection */ \
  X(1846, ConfigText4, "config_text4")              /* fourth text of a template configuration */ \
  X(1857, CloneFlag, "clone_flag")                  /* flag of clone options */ \
  X(1859, Role, "role")                             /* a server role of a container */ \
  X(1899, EidSet, "eid_set")                        /* ids of the containers that use a cached template */ \
  X(1992, Period, "period")                         /* update check period value */ \
  X(2005, ConfigText5, "config_text5")              /* fifth text of a template configuration */ \
  X(2047, Address, "address")                       /* IP address of a shaped address range */ \
  X(2053, NetDevice, "net_device")                  /* a virtual Ethernet device of a container */ \
  X(2291, IsSample, "is_sample")                    /* the container is a sample */

namespace MBQ {
namespace Tag {

#define MBQ_TAG_CONSTANT(id, name, element) constexpr int k##name = id;
MBQ_TAGS(MBQ_TAG_CONSTANT)
#undef MBQ_TAG_CONSTANT

}  // namespace Tag
}  // namespace MBQ
