#!/usr/bin/python3
"""An Ansible module: what the host's datapath consists of, and its settings, as facts."""

from ansible.module_utils.basic import AnsibleModule

DOCUMENTATION = """
module: qdp_facts
short_description: Facts of the host's accelerated packet datapath
description:
  - The switches with their ports, and the settings by path, as the fact C(qdp). Changes nothing.
options: {}
"""

EXAMPLES = """
- qdp_facts:
- debug:
    msg: "{{ qdp.switches | map(attribute='name') }}"
"""

RETURN = """
ansible_facts:
  description: C(qdp.switches), a list with the keys of C(qdp switch show -j) and C(ports); C(qdp.settings) by path.
  type: dict
  returned: always
"""


def main():
    module = AnsibleModule(argument_spec={}, supports_check_mode=True)
    try:
        import qdp
        from qdp.cli._rows import for_json, plain
    except ImportError as error:
        module.fail_json(msg="the Python package qdp is missing on this host: {}".format(error))
    try:
        host = qdp.Host()
        switches = []
        for switch in host.switches():
            ports = [plain(vars(port.info)) for port in switch.ports()]
            switches.append(dict(plain(vars(switch.info)), alias=switch.alias, ports=ports))
        settings = {path: setting.get() for path, setting in host.all_settings() if setting.is_readable}
    except qdp.QdpError as error:
        module.fail_json(msg="{}; {}".format(error, error.hint))
    module.exit_json(changed=False, ansible_facts={"qdp": {"switches": for_json(switches), "settings": settings}})


if __name__ == "__main__":
    main()
