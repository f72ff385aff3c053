# %% [markdown]
# # A circuit in four parts
#
# Gates on a grid are connected to their neighbours, and now and then to one far away, as in a real circuit. A partition
# finds the regions again; a bar for each part shows its weight, and the map how the parts lie.

# %%
import random

from matplotlib import pyplot

import kapris

side = 40
rng = random.Random(3)
nets = {}
for gate in range(side * side):
    x, y = gate % side, gate // side
    near = {(x + 1, y), (x, y + 1), (x + rng.randint(0, 2), y + rng.randint(0, 2))}
    sinks = [a + b * side for a, b in near if a < side and b < side and a + b * side != gate]
    if rng.random() < 0.02:
        sinks.append(rng.randrange(side * side))
    if sinks:
        nets[f"n{gate}"] = [f"g{cell}" for cell in [gate, *sinks]]
area = {f"g{gate}": rng.choice([1, 1, 2, 4]) for gate in range(side * side)}
connected = {gate for net in nets.values() for gate in net}
circuit = kapris.Hypergraph.from_nets(nets, cell_weights={gate: area[gate] for gate in connected})
print(circuit)

# %% [markdown]
# The cells of the left edge are pads, which stay in part 0.

# %%
pads = {f"g{y * side}": 0 for y in range(0, side, 8)}
result = kapris.partition(circuit, 4, epsilon=0.05, objective="connectivity", fixed=pads, seed=1)
print(result)
print("part weights", result.part_weights, "limit", result.limits[0])

# %%
figure, (left, right) = pyplot.subplots(1, 2, figsize=(9, 4))
places = [int(name[1:]) for name in circuit.cell_names]
left.scatter([p % side for p in places], [p // side for p in places], c=list(result.part), s=8, cmap="tab10")
left.set_title("gates by part")
left.set_aspect("equal")
right.bar(range(result.parts), result.part_weights)
right.axhline(result.limits[0], color="black", linewidth=1)
right.set_title("part weights and their limit")
figure.savefig("circuit.png", dpi=80)
