# %% [markdown]
# # A tensor network cut in two
#
# The tensors of a lattice with bonds of different dimensions are to be contracted on two machines. What the two results
# share is one tensor with the indices that are cut: the sum of the logarithms of their dimensions is to be small, which
# is the cut of the hypergraph with a cell for each tensor and a net for each index.

# %%
import random

from matplotlib import pyplot

import kapris
from kapris.cotengra import hypergraph

side = 12
rng = random.Random(5)
size_dict, inputs = {}, [[] for _ in range(side * side)]
for tensor in range(side * side):
    for neighbour, there in ((tensor + 1, tensor % side < side - 1), (tensor + side, tensor // side < side - 1)):
        if there:
            index = f"{tensor}-{neighbour}"
            size_dict[index] = rng.choice([2, 4, 8, 16])
            inputs[tensor].append(index)
            inputs[neighbour].append(index)

# %%
h = hypergraph(inputs, size_dict)
result = kapris.partition(h, 2, epsilon=0.1, seed=1, starts=4)
half = kapris.evaluate(h, [int(tensor % side >= side // 2) for tensor in range(side * side)])
print(f"2^{result.cut / 1000:.0f} entries shared, 2^{half.cut / 1000:.0f} when cut straight down the middle")
assert result.cut <= half.cut

# %%
figure, ax = pyplot.subplots(figsize=(5, 5))
for index, size in size_dict.items():
    a, b = map(int, index.split("-"))
    is_cut = result.part[a] != result.part[b]
    ax.plot([a % side, b % side], [a // side, b // side], color="tab:red" if is_cut else "0.6", linewidth=size / 2)
ax.scatter([t % side for t in range(side * side)], [t // side for t in range(side * side)], c=list(result.part),
           cmap="coolwarm", s=80, zorder=3)
ax.set_title("bonds as wide as their dimension, cut ones red")
ax.set_aspect("equal")
figure.savefig("tensors.png", dpi=80)
