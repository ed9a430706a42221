"""qdp_host, as it is installed for another interpreter."""

import _qdp_installed

_qdp_installed.load(__name__)
