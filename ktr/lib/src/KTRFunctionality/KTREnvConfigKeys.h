#pragma once

// The fixed keys of a container's configuration file, lower case, in the order of the file
// parser's key table (KTREnvConfigBashParser), for programs that must know the keys without
// loading the library. The list and the parser's table must agree; a test checks that they do.
// The resource keys come from the vocabulary.

namespace KTR {

inline constexpr const char* kEnvConfigFixedKeys[] = {
    "ve_root",     "ve_private",      "features", "devnodes",     "offline_management", "onboot",
    "disabled",    "hostname",        "ostemplate", "distribution", "nameserver",       "ip_address",
    "templates",   "netif",           "offline_service", "roles",  "iptables",         "netfilter",
    "name",        "description",     "searchdomain", "rate",     "slmmode",          "ve_type",
    "uuid",        "origin_sample",   "ratebound", "arch",        "technologies",     "platform",
    "disk",
};

}  // namespace KTR
