#include "NoteStore.h"

namespace Notes {

std::vector<Note> NoteStore::examples() {
  return {
      {"Groceries", "09:12",
       "Lemons, two fennel bulbs, a loaf of rye, olive oil.\n\nThe good olives are at the stall by the "
       "bridge, not in "
       "the hall.",
       0x5BA55B},
      {"Trip to the coast", "Yesterday",
       "Leave before seven, the ferry does not wait. Bring the blue tent and the small stove.\n\nIf it "
       "rains: the "
       "lighthouse is open until five.",
       0x3E8ED0},
      {"Ideas for the garden", "Saturday",
       "Move the rosemary to the wall, where it gets the evening sun. Sow poppies between the stones.\n\nAsk "
       "Ada for a "
       "cutting of her fig.",
       0xD9822B},
      {"Books to return", "Friday",
       "The atlas, the one on knots, and both volumes of letters. The library closes at six on Fridays.",
       0xA05CB5},
      {"Piano", "1 January", "Practise the left hand alone. Slowly, then once more slowly.", 0xC8505A},
      {"Letter to Jun", "28 December",
       "Thank him for the photographs. Tell him about the snow, and that the cat has found the warm shelf.",
       0x2F9E9A},
  };
}

}  // namespace Notes
