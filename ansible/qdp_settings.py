#!/usr/bin/python3
"""An Ansible module: settings of the host's datapath as they are to be."""

from ansible.module_utils.basic import AnsibleModule

DOCUMENTATION = """
module: qdp_settings
short_description: Settings of the host's accelerated packet datapath
description:
  - Sets what differs, all or nothing, and reports what has changed.
  - Settings that the platform cannot read back are set each time, and reported as changed.
options:
  settings:
    description: Values by the setting's path, as C(qdp setting show) lists them.
    type: dict
    required: true
"""

EXAMPLES = """
- qdp_settings:
    settings:
      flow-timeout: 30
      dvs-production/burst-size: 64
"""

RETURN = """
changes:
  description: What has changed, or would change in check mode.
  type: list
  returned: always
  sample: [{"path": "flow-timeout", "before": 10, "after": 30}]
"""


def main():
    options = {"settings": {"type": "dict", "required": True}}
    module = AnsibleModule(argument_spec=options, supports_check_mode=True)
    try:
        import qdp
        from qdp.cli.setting import given
    except ImportError as error:
        module.fail_json(msg="the Python package qdp is missing on this host: {}".format(error))
    try:
        plan, _ = given(qdp.Host(), module.params["settings"])
        changes = plan.diff() if module.check_mode else plan.apply()
    except qdp.QdpError as error:
        module.fail_json(msg="{}; {}".format(error, error.hint))
    module.exit_json(
        changed=bool(changes),
        changes=[{"path": each.path, "before": each.before, "after": each.after} for each in changes],
        diff={
            "before": {each.path: each.before for each in changes},
            "after": {each.path: each.after for each in changes},
        },
    )


if __name__ == "__main__":
    main()
