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
      {"Soup for six", "21 December", "Two leeks, four potatoes, a piece of celeriac. Cream at the very end.",
       0x5BA55B},
      {"Bicycle", "19 December", "The rear brake rubs. The left pedal clicks, but only uphill.", 0x3E8ED0},
      {"Words I had to look up", "15 December",
       "Fathom, as a verb. Sedge. To winnow. Lee, which is the sheltered side.", 0xD9822B},
      {"Film club", "12 December",
       "Mondays at eight, the small hall. Whoever chooses the film brings the biscuits.", 0xA05CB5},
      {"Measurements", "9 December",
       "Shelf: 84 cm wide, 27 deep. The wall is not straight: 2 cm less at the top.", 0xC8505A},
      {"Birds at the window", "4 December",
       "Two blue tits, a nuthatch, once a woodpecker that looked surprised.", 0x2F9E9A},
      {"Dentist", "1 December", "Half past nine. Ask about the tooth that minds the cold.", 0x5BA55B},
      {"Names for the boat", "27 November", "Patience. Second Thoughts. Anything but Windsong.", 0x3E8ED0},
      {"Bread", "23 November", "Less water than the book says, and twenty minutes longer in the oven.",
       0xD9822B},
      {"Walk around the lake", "20 November",
       "Three hours with a rest. The path is closed behind the mill until spring.", 0xA05CB5},
  };
}

}  // namespace Notes
