"""Memory that the module asks for is dirty at first, and what lies behind it is not text: nothing of it shows."""

from contract import BY_NAME
from observe import Observer


def test_text_that_fills_its_length_ends_there(frozen, tortured):
    torture, module = tortured
    before = torture.blocks_out()
    for length in range(1, 40):
        frozen.script("Qdp_Get_Uplink_Priv_Stats_Len", outputs=[length.to_bytes(4, "little")])
        frozen.script("Qdp_Get_Uplink_Priv_Stats", outputs=[b"x" * length])
        assert module.GetUplinkStats(0, 0)["privStats"] == "x" * length
    assert torture.blocks_out() == before


def test_port_list_without_bytes_has_no_port_for_traffic(frozen, tortured):
    _, module = tortured
    frozen.script("Qdp_Get_Port_List")
    outcome = Observer(module, frozen).call("InjectLBTraffic", 0, ((0, 0, 1, 0, 1),))
    assert (outcome.result, outcome.printed) == (None, "Invalid traffic format at traffic 0.\n\n")
    assert [call.operation for call in outcome.calls] == ["Qdp_Get_Port_List"]


def test_list_without_bytes_is_empty(frozen, tortured):
    _, module = tortured
    for name in ("ListSwitches", "ListPorts", "ListDevAffinity"):
        frozen.script(BY_NAME[name].answers[0])
        assert getattr(module, name)(*BY_NAME[name].arguments) == []
