/* The names of protocols in the summary of a packet capture. */

/** By the link type of a capture. */
export const LINK_NAMES = {
  1: 'Ethernet',
  12: 'IP',
  14: 'IP',
  101: 'IP',
  113: 'Linux cooked',
  228: 'IPv4',
  229: 'IPv6',
  276: 'Linux cooked',
};

/** By EtherType. */
export const ETHER_NAMES = {
  0x0806: 'ARP',
  0x8035: 'RARP',
  0x8809: 'LACP/OAM',
  0x8847: 'MPLS',
  0x8848: 'MPLS',
  0x8863: 'PPPoE',
  0x8864: 'PPPoE',
  0x888e: 'EAPOL',
  0x88cc: 'LLDP',
  0x88f7: 'PTP',
  0x8902: 'CFM',
  0x8906: 'FCoE',
};

/** By the protocol number of IP. */
export const IP_NAMES = {
  1: 'ICMP',
  2: 'IGMP',
  4: 'IPv4 in IP',
  6: 'TCP',
  17: 'UDP',
  41: 'IPv6 in IP',
  47: 'GRE',
  50: 'ESP',
  58: 'ICMPv6',
  89: 'OSPF',
  132: 'SCTP',
};

/** By port of TCP or UDP. */
export const PORT_NAMES = {
  53: 'DNS',
  67: 'DHCP',
  68: 'DHCP',
  123: 'NTP',
  161: 'SNMP',
  162: 'SNMP',
  319: 'PTP',
  320: 'PTP',
  546: 'DHCPv6',
  547: 'DHCPv6',
  862: 'TWAMP',
  5353: 'mDNS',
};
