/** Lists by a key; a key that was never added has an empty one. */
export class Lists<Key, Item> {
  private readonly lists = new Map<Key, Item[]>();

  add(key: Key, item: Item): void {
    const list = this.lists.get(key);
    if (list) {
      list.push(item);
    } else {
      this.lists.set(key, [item]);
    }
  }

  has(key: Key): boolean {
    return this.lists.has(key);
  }

  of(key: Key): readonly Item[] {
    return this.lists.get(key) ?? [];
  }

  entries(): IterableIterator<[Key, readonly Item[]]> {
    return this.lists.entries();
  }

  all(): Item[] {
    return [...this.lists.values()].flat();
  }
}
